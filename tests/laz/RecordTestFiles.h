// Generated LAS files and scratch folders for the record stream and LAZ tests.
#pragma once

#include "las/LasFile.h"

#include "las/RecordStream.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Skips the running test where the build has no LAZ support.
#define SKIP_WITHOUT_LAZ()                                                                                   \
    if (!vx::las::lazAvailable())                                                                            \
    GTEST_SKIP() << "LAZ support is not built in (LASzip neither installed nor fetched at configure time)"

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
/// The message of the vexaro::LasError that f throws, or "(no LasError)".
std::string messageOf(const std::function<void()>& f);

} // namespace laztest
