// A generated scene classified by the default command and judged against its truth, for the
// suites that hold the pipeline to its targets.
#pragma once

#include "CliTestSupport.h"

#include "Evaluation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace clitest {

struct SceneCase {
    const char* kind;
    const char* density;
    const char* points;
    bool buildings; ///< the kind holds buildings to judge
};

/// Generates the scene, classifies it with the default command and compares with its truth.
inline vx::app::Evaluation classifyScene(const SceneCase& c, const std::vector<std::string>& extra = {})
{
    std::vector<std::string> scene = {"scene", "-o",        "in.las",  "--truth",  "truth.las", "--kind",
                                      c.kind,  "--density", c.density, "--points", c.points,    "-q"};
    scene.insert(scene.end(), extra.begin(), extra.end());
    const auto s = run(scene);
    EXPECT_EQ(s.status, 0) << s.err;
    const auto r = run({"classify", "in.las", "-o", "out.las", "-q"});
    EXPECT_EQ(r.status, 0) << r.err;
    return vx::app::evaluate(classesOf((scratch() / "truth.las").string()),
                             classesOf((scratch() / "out.las").string()));
}

} // namespace clitest
