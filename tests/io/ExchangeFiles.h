// Small LAS files made in the tests' temporary folder.
#pragma once

#include "las/LasFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace vxtest {

inline std::string scratchPath(const std::string& name)
{
    auto dir = std::filesystem::temp_directory_path() / "vexaro-io-tests";
    std::filesystem::create_directories(dir);
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    return (dir / (std::string(info ? info->name() : "x") + "-" + name)).string();
}

inline vx::las::LasFile makeLas(uint8_t minor, uint8_t format, const std::vector<vx::las::NewPoint>& pts,
                                double scale = 0.01, double offset = 0.0)
{
    const double s[3] = {scale, scale, scale}, o[3] = {offset, offset, offset};
    auto f = vx::las::LasFile::create(minor, format, s, o);
    for (const auto& p : pts)
        f.addPoint(p);
    return f;
}

inline vx::las::NewPoint lasPoint(double x, double y, double z, int cls = 1, int ret = 1, int of = 1,
                                  uint16_t intensity = 0)
{
    vx::las::NewPoint p;
    p.x = x, p.y = y, p.z = z;
    p.classification = cls;
    p.returnNumber = ret;
    p.numberOfReturns = of;
    p.intensity = intensity;
    return p;
}

} // namespace vxtest
