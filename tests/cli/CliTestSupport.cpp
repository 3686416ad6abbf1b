#include "CliTestSupport.h"

#include <las/LasFile.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/wait.h>

namespace fs = std::filesystem;

namespace clitest {

namespace {

std::string quoted(const std::string& s)
{
    std::string q = "'";
    for (char c : s)
        q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
}

/// The tool under test: the build's own, unless VEXARO_CLI names another (for a test binary that
/// runs away from its build tree, as on a machine that only receives the built files).
std::string cliPath()
{
    const char* moved = std::getenv("VEXARO_CLI");
    return moved && *moved ? std::string(moved) : std::string(VEXARO_CLI);
}

} // namespace

std::string cliExecutable()
{
    return cliPath();
}

fs::path scratch()
{
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    const std::string name = std::string(info->test_suite_name()) + "." + info->name();
    static std::string made;
    const fs::path dir = fs::path(VEXARO_BINARY_DIR) / "cli-scratch" / name;
    if (made != name) {
        fs::remove_all(dir);
        fs::create_directories(dir);
        made = name;
    }
    return dir;
}

Result run(const std::vector<std::string>& args)
{
    const fs::path dir = scratch();
    std::string command = "cd " + quoted(dir.string()) + " && " + quoted(cliPath());
    for (const auto& a : args)
        command += " " + quoted(a);
    const fs::path out = dir / ".stdout", err = dir / ".stderr";
    command += " >" + quoted(out.string()) + " 2>" + quoted(err.string()) + " </dev/null";
    const int raw = std::system(command.c_str());
    Result r;
    r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    r.out = readText(out);
    r.err = readText(err);
    fs::remove(out);
    fs::remove(err);
    return r;
}

std::string sample(const std::string& name)
{
    return (fs::path(VEXARO_DATA_DIR) / name).string();
}

std::string writeText(const std::string& name, const std::string& text)
{
    const fs::path path = scratch() / name;
    std::ofstream(path) << text;
    return path.string();
}

std::vector<int> classesOf(const std::string& path)
{
    const auto file = vx::las::LasFile::read(path);
    std::vector<int> out(file.size());
    for (std::size_t i = 0; i < file.size(); ++i)
        out[i] = file.classification(i);
    return out;
}

std::string readText(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

std::string lineStartingWith(const std::string& text, const std::string& prefix)
{
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line))
        if (line.rfind(prefix, 0) == 0)
            return line;
    return "";
}

void expectLines(const std::string& text, const std::vector<std::pair<std::string, std::string>>& expected)
{
    for (const auto& [prefix, line] : expected)
        EXPECT_EQ(lineStartingWith(text, prefix), line) << "the line starting with \"" << prefix << "\"";
}

} // namespace clitest
