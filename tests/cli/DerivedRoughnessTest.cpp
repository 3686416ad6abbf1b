// The roughness the roof test by echoes allows grows with the neighbourhood that sparse data
// needs, so that gables straddled at their ridge pass; dense data keeps 0.5 m.
#include "AppUnitTests.h"

#ifdef VEXARO_APP_LINKED

#include "Presets.h"

#include <gtest/gtest.h>

#include <string>

using namespace vx::app;

namespace {

double derived(const char* name, double spacing, double metresPerUnit = 1)
{
    DataScale scale;
    scale.spacing = scale.lastSpacing = spacing;
    scale.metresPerUnit = scale.metresPerVerticalUnit = metresPerUnit;
    for (const auto& d : deriveParameters(presetNamed("general"), scale))
        if (std::string(d.name) == name)
            return d.value;
    return -1;
}

} // namespace

TEST(DerivedRoughness, GrowsWithTheEchoRangeOfSparseData)
{
    // 1.8 m spacing (0.3 pts/m2): a range of 2.88 m, and 0.3 of it.
    EXPECT_NEAR(derived("EchoRange", 1.8), 2.88, 1e-9);
    EXPECT_NEAR(derived("EchoRoughness", 1.8), 0.864, 1e-9);
    // Dense data: the 1.5 m range and the 0.5 m floor.
    EXPECT_NEAR(derived("EchoRange", 0.3), 1.5, 1e-9);
    EXPECT_NEAR(derived("EchoRoughness", 0.3), 0.5, 1e-9);
    // In feet: the same lengths in the file's unit.
    EXPECT_NEAR(derived("EchoRoughness", 1.8, 0.3048), 0.864 / 0.3048, 1e-9);
}

#endif
