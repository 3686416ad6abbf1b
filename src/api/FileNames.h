// File-name rules of the exchange methods.
#pragma once

#include <string>

namespace vx::io {

/// The characters after the last '/' up to the last '.'. Only '/' separates folders, so a name
/// written with backslashes keeps its drive and folders in the stem.
std::string lasStem(const std::string& fileName);

} // namespace vx::io
