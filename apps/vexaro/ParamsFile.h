// Parameter files: one `Name = value` a line, '#' starts a comment, blank lines are skipped.
#pragma once

#include "ParameterTable.h"

#include <istream>
#include <string>
#include <vector>

namespace vx::app {

/// Parses a parameter file's text; `fileName` prefixes error messages ("FILE:LINE: ...").
/// Throws UsageError at the first bad line.
std::vector<Setting> parseParams(std::istream& in, const std::string& fileName);

/// Reads and parses a parameter file; throws std::runtime_error when it cannot be read.
std::vector<Setting> readParamsFile(const std::string& path);

} // namespace vx::app
