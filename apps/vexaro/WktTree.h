// OGC well-known text (WKT 1 and 2) as a tree of KEYWORD[value, ..., CHILD[...]] nodes, enough
// to read the units of a coordinate system.
#pragma once

#include <string>
#include <vector>

namespace vx::app {

struct WktNode {
    std::string keyword;
    std::vector<std::string> values; ///< quoted texts (unquoted), numbers and bare words, in order
    std::vector<WktNode> children;
};

/// Parses one root node (trailing NULs and blanks allowed); false on malformed text or nesting
/// deeper than 64 levels, with `root` then unspecified.
bool parseWkt(const std::string& text, WktNode& root);

} // namespace vx::app
