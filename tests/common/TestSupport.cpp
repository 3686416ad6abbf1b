#include "common/TestSupport.h"

#include "exec/Backend.h"

#include <algorithm>
#include <cstdio>
#include <sys/wait.h>

namespace vxtest {

bool anyLineStartsWith(const std::vector<std::string>& lines, const std::string& start)
{
    return std::any_of(lines.begin(), lines.end(),
                       [&](const std::string& l) { return l.rfind(start, 0) == 0; });
}

std::vector<std::string> CaptureStdout::lines() const
{
    std::vector<std::string> out;
    std::istringstream in(buffer_.str());
    std::string line;
    while (std::getline(in, line))
        out.push_back(line);
    return out;
}

bool cudaAvailable()
{
    return vx::cudaDeviceCount() > 0;
}

std::vector<std::string> availableBackends()
{
    std::vector<std::string> b{"cpu"};
    if (cudaAvailable())
        b.push_back("cuda");
    return b;
}

std::vector<Setting> allSettings()
{
    std::vector<Setting> s;
    for (const std::string b : {"cpu", "cuda"}) {
        s.push_back({b, false});
        s.push_back({b, true});
    }
    return s;
}

std::string settingName(const ::testing::TestParamInfo<Setting>& info)
{
    return info.param.backend + (info.param.soa ? "_SoA" : "_AoS");
}

std::vector<int> allowTable(std::initializer_list<int> admitted)
{
    std::vector<int> t(256, 0);
    for (int c : admitted)
        t.at(c) = 1;
    return t;
}

std::string dataFile(const std::string& name)
{
    return std::string(VEXARO_DATA_DIR) + "/" + name;
}

CommandResult runCommand(const std::string& command)
{
    CommandResult r;
    std::FILE* p = ::popen((command + " 2>&1").c_str(), "r");
    if (!p)
        return r;
    char buffer[4096];
    while (std::size_t n = std::fread(buffer, 1, sizeof buffer, p))
        r.out.append(buffer, n);
    const int status = ::pclose(p);
    r.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return r;
}

std::string laspyPython(std::string& why)
{
    static const CommandResult venv = runCommand(std::string("bash '") + VEXARO_SOURCE_DIR +
                                                 "/tests/laz/laspy_venv.sh' '" + VEXARO_BINARY_DIR + "'");
    if (venv.status != 0) {
        why = venv.out;
        return "";
    }
    std::string python = venv.out;
    while (!python.empty() && (python.back() == '\n' || python.back() == '\r'))
        python.pop_back();
    return python;
}

} // namespace vxtest
