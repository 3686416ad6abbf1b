// Checks made before any long work starts, so that a run does not fail at its very end.
#pragma once

#include <string>

namespace vx::app {

/// Throws std::runtime_error "cannot read WHAT 'PATH': REASON" unless PATH is a regular file
/// that can be opened for reading.
void requireReadableFile(const std::string& path, const std::string& what);

/// Throws std::runtime_error "cannot write WHAT 'PATH': REASON" unless a file can be created (or
/// appended to) at PATH. The file's content is left alone; a file created by the check is
/// removed again.
void requireWritableFile(const std::string& path, const std::string& what);

/// Creates the folder (and its parents) when missing; throws std::runtime_error
/// "cannot create folder 'PATH': REASON" when that fails or PATH is not a folder.
void requireFolder(const std::string& path);

/// True when both paths name the same existing file.
bool sameFile(const std::string& a, const std::string& b);

} // namespace vx::app
