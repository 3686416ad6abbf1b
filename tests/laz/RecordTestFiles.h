// Generated LAS files and scratch folders for the record stream and LAZ tests.
#pragma once

#include "las/LasFile.h"

#include <cstdint>
#include <string>
#include <vector>

namespace laztest {

/// A created LAS 1.minor file of the point format holding n varied points; seed varies them.
vx::las::LasFile makeFile(uint8_t minor, uint8_t format, std::size_t n, unsigned seed = 1);
/// The point records of a file: its bytes from the point offset on, through the last record.
std::vector<uint8_t> records(const vx::las::LasFile& f);
/// A fresh empty folder for one test.
std::string scratchFolder(const std::string& name);
/// The names in a folder, sorted.
std::vector<std::string> folderEntries(const std::string& folder);
std::vector<uint8_t> fileBytes(const std::string& path);
void putBytes(const std::string& path, const std::vector<uint8_t>& bytes);
bool exists(const std::string& path);

} // namespace laztest
