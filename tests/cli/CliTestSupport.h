// Running the real vexaro executable from tests, in a scratch folder of each test's own.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace clitest {

struct Result {
    int status = -1; ///< exit status
    std::string out; ///< standard output
    std::string err; ///< standard error
};

/// The tool under test.
std::string cliExecutable();
/// Runs `vexaro ARGS...` with the scratch folder as working directory.
Result run(const std::vector<std::string>& args);

/// A fresh, empty folder for the running test (removed by the next run of the same test).
std::filesystem::path scratch();

/// Path of a sample file of the shared data folder.
std::string sample(const std::string& name);

/// Writes text to a file of the scratch folder and returns its path.
std::string writeText(const std::string& name, const std::string& text);

/// The class of every point of a LAS or LAZ file, in file order.
std::vector<int> classesOf(const std::string& path);
/// Whole content of a file.
std::string readText(const std::filesystem::path& path);

/// The line of `text` that starts with `prefix`, or "" when there is none.
std::string lineStartingWith(const std::string& text, const std::string& prefix);

/// Expects, for each (prefix, line) pair, that the line of `text` starting with prefix is line.
void expectLines(const std::string& text, const std::vector<std::pair<std::string, std::string>>& expected);

} // namespace clitest
