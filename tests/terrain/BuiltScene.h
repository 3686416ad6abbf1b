// Small built scenes for the steps that refine the ground: each point with the class it starts
// with and the class the step should leave it with, and one run of a step over them.
#pragma once

#include "common/TestSupport.h"

#include <Vexaro.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace terraintest {

/// Expected class of a point the step may leave either way.
constexpr int kEither = -1;

/// What a point of a built scene is, and the class the step should leave it with.
struct Built {
    std::vector<VX_Point<double>> points;
    std::vector<int> expected;
    void add(double x, double y, double z, int cls, int expect)
    {
        points.push_back(vxtest::point<double>(x, y, z, cls));
        expected.push_back(expect);
    }
};

/// Expects the scene's classes (kEither: any); names the first points that differ, with where
/// they lie.
inline void expectClasses(const std::vector<int>& got, const Built& scene)
{
    ASSERT_EQ(got.size(), scene.expected.size());
    int wrong = 0;
    std::string first;
    for (std::size_t k = 0; k < got.size(); ++k)
        if (scene.expected[k] != kEither && got[k] != scene.expected[k] && ++wrong <= 5) {
            const auto& p = scene.points[k];
            first += " (" + std::to_string(p.x) + ", " + std::to_string(p.y) + ", " + std::to_string(p.z) +
                     "): " + std::to_string(got[k]) + " not " + std::to_string(scene.expected[k]) + ";";
        }
    EXPECT_EQ(wrong, 0) << first;
}

/// Loads the scene with one host thread, decomposes it into planar columns of `column`, admits
/// `admitted`, lets `tune` set parameters, runs `step` and returns the classes; the step's
/// messages (level 2) go to `log` when given.
template <class T, class Tune, class Step>
std::vector<int> runStep(const Built& scene, const vxtest::Setting& s, double column,
                         std::initializer_list<int> admitted, Tune tune, Step step, std::string* log)
{
    std::vector<VX_Point<T>> pts;
    for (const auto& p : scene.points)
        pts.push_back(vxtest::point<T>(T(p.x), T(p.y), T(p.z), p.classification));
    Vexaro<T> v;
    vxtest::configure(v, s, 2);
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    {
        vxtest::CaptureStdout quiet;
        v.regularGridDecomposition2D(column, column);
    }
    const std::vector<int> table = vxtest::allowTable(admitted);
    v.set_AllowedInputClasses(const_cast<int*>(table.data()), static_cast<int>(table.size()));
    tune(v);
    vxtest::CaptureStdout out;
    step(v);
    if (log)
        *log = out.text();
    return vxtest::classes(v);
}

} // namespace terraintest
