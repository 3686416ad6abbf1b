// Helpers shared by the test suites: output capture, backends present, small clouds.
#pragma once

#include "common/Probe.h"

#include <Vexaro.h>

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace vxtest {

/// Redirects std::cout for its lifetime.
class CaptureStdout {
public:
    CaptureStdout() : old_(std::cout.rdbuf(buffer_.rdbuf())) {}
    ~CaptureStdout() { std::cout.rdbuf(old_); }
    std::string text() const { return buffer_.str(); }
    std::vector<std::string> lines() const;
    void clear() { buffer_.str(""); }

private:
    std::ostringstream buffer_;
    std::streambuf* old_;
};

/// Whether one of `lines` starts with `start`.
bool anyLineStartsWith(const std::vector<std::string>& lines, const std::string& start);

/// Replaces the library's clock for its lifetime: every reading is `step` ticks of 100 ns after
/// the one before, so a step or a decomposition lasts exactly `step` ticks and its timing lines
/// are known in advance.
class FakeClock {
public:
    explicit FakeClock(long long step)
    {
        now() = 0;
        stepTicks() = step;
        vx::setTickSource(&read);
    }
    ~FakeClock() { vx::setTickSource(nullptr); }
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

private:
    static long long& now()
    {
        static long long ticks = 0;
        return ticks;
    }
    static long long& stepTicks()
    {
        static long long ticks = 0;
        return ticks;
    }
    static long long read() { return now() += stepTicks(); }
};

/// "cpu" always; "cuda" where a CUDA device answers.
std::vector<std::string> availableBackends();
bool cudaAvailable();

/// One execution setting of a test: backend and layout.
struct Setting {
    std::string backend;
    bool soa;
};
/// Every backend and layout; CUDA settings are skipped where no device answers.
std::vector<Setting> allSettings();

class SettingTest : public ::testing::TestWithParam<Setting> {
protected:
    void SetUp() override
    {
        if (GetParam().backend == "cuda" && !cudaAvailable())
            GTEST_SKIP() << "no CUDA device";
    }
};
std::string settingName(const ::testing::TestParamInfo<Setting>& info);

template <class T>
VX_Point<T> point(T x, T y, T z, int cls = 1, int lastReturn = 1, T nx = 0, T ny = 0, T nz = 0,
                  float hi = 0.f)
{
    VX_Point<T> p{};
    p.x = x, p.y = y, p.z = z;
    p.nx = nx, p.ny = ny, p.nz = nz;
    p.heightIndex = hi;
    p.classification = cls;
    p.lastReturn = lastReturn;
    return p;
}

/// A classifier with the test's setting, one host thread (ascending order) and quiet messages.
template <class T> void configure(Vexaro<T>& v, const Setting& s, int messageLevel = 0)
{
    v.setComputeBackend(s.backend);
    v.set_SoA(s.soa);
    v.setHostThreads(1);
    v.setMessageLevel(messageLevel);
    v.setFacadeMessageLevel(0);
}

template <class T> std::vector<VX_Point<T>> points(Vexaro<T>& v)
{
    std::vector<VX_Point<T>> out(v.pointCount());
    v.copyPoints(out.data(), static_cast<int>(out.size()));
    return out;
}

template <class T> std::vector<int> classes(Vexaro<T>& v)
{
    std::vector<int> out;
    for (const auto& p : points(v))
        out.push_back(p.classification);
    return out;
}

/// A table admitting exactly the listed classes (256 entries).
std::vector<int> allowTable(std::initializer_list<int> admitted);

/// Path of a sample file of the shared data folder.
std::string dataFile(const std::string& name);

/// A command's exit status and everything it printed (standard output and error).
struct CommandResult {
    int status = -1;
    std::string out;
};
CommandResult runCommand(const std::string& command);

/// The python of the build folder's virtual environment holding laspy and lazrs, the independent
/// LAS/LAZ reader the codec is checked against (tests/laz/laspy_venv.sh makes it on first use), or
/// empty with the reason in `why` when it cannot be had.
std::string laspyPython(std::string& why);

} // namespace vxtest
