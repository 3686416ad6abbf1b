// Parameter names, values and files as the tool reads them.
#include "AppUnitTests.h"

#ifdef VEXARO_APP_LINKED

#include "ParameterTable.h"
#include "ParameterText.h"
#include "ParamsFile.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

using namespace vx::app;

TEST(Params, FileLinesCommentsAndBlanks)
{
    std::istringstream in("# tuned for dense data\n"
                          "\n"
                          "GroundGrowthRange = 2.5\n"
                          "  BuildingMinNoN=7   # more voters\n"
                          "VegetationRatio\t=\t0.25\r\n"
                          "   \n"
                          "GroundGrowthRange = 3\n");
    const auto s = parseParams(in, "p.txt");
    ASSERT_EQ(s.size(), 4u);
    EXPECT_EQ(s[0].name, "GroundGrowthRange");
    EXPECT_EQ(s[0].value, 2.5);
    EXPECT_EQ(s[1].name, "BuildingMinNoN");
    EXPECT_EQ(s[1].value, 7);
    EXPECT_EQ(s[2].name, "VegetationRatio");
    EXPECT_EQ(s[2].value, 0.25);
    EXPECT_EQ(s[3].value, 3); // the later line wins when applied
}

TEST(Params, BadLineNamesFileAndLine)
{
    std::istringstream in("GroundGrowthRange = 2\nBuildingRange = wide\n");
    try {
        parseParams(in, "p.txt");
        FAIL();
    } catch (const UsageError& e) {
        EXPECT_STREQ(e.what(),
                     "p.txt:2: \"wide\" is not a number (BuildingRange takes a number such as 1.5)");
    }
}

TEST(Params, NumbersAndWholeNumbers)
{
    EXPECT_EQ(parseSetting("GroundGrowthRange", "1e-1", "x").value, 0.1);
    EXPECT_EQ(parseSetting("GroundGrowthRange", " -2 ", "x").value, -2);
    EXPECT_EQ(parseSetting("BuildingMinNoN", "12", "x").value, 12);
    EXPECT_EQ(parseSetting("BuildingMinNoN", "3.0", "x").value, 3);
    EXPECT_THROW(parseSetting("BuildingMinNoN", "3.5", "x"), UsageError);
    EXPECT_THROW(parseSetting("BuildingMinNoN", "99999999999", "x"), UsageError);
    EXPECT_THROW(parseSetting("GroundGrowthRange", "inf", "x"), UsageError);
    EXPECT_THROW(parseSetting("GroundGrowthRange", "0x", "x"), UsageError);
}

TEST(Params, ClosestName)
{
    EXPECT_EQ(closestParameterName("groundgrowthrange"), "GroundGrowthRange");
    EXPECT_EQ(closestParameterName("BuildingMinHeigth"), "BuildingMinHeight");
    EXPECT_EQ(closestParameterName("VegetationLow"), "VegetationLowLimit");
    EXPECT_EQ(closestParameterName("Vegetation"), "");
    EXPECT_EQ(closestParameterName("Nothing"), "");
}

TEST(Params, EveryNameOnce)
{
    std::set<std::string> names;
    for (const auto& p : parameterInfos())
        EXPECT_TRUE(names.insert(p.name).second) << p.name;
    EXPECT_EQ(names.size(), 95u);
}

TEST(Params, RangesWidenTheGrid)
{
    Vexaro<float> v;
    PipelineOptions o;
    applySettings({{"GroundGrowthRange", 1.0}, {"VegetationRange", 3.0}}, v, o);
    EXPECT_EQ(gridCellSizeFor(o, v), 3.0);
    applySettings({{"Building3GroundRange", 2.0}}, v, o);
    EXPECT_EQ(gridCellSizeFor(o, v), 4.0); // the closing step looks twice as far
    applySettings({{"GridCellSize", 5.0}, {"SeedCellSize", 50.0}, {"BuildingCompanionClass", 1}}, v, o);
    EXPECT_EQ(gridCellSizeFor(o, v), 5.0);
    EXPECT_EQ(o.seedCellSize, 50.0);
    EXPECT_EQ(o.buildingCompanionClass, 1);
    EXPECT_EQ(gridCellSizeFor(PipelineOptions{}, Vexaro<float>{}), 2.0);
}

TEST(Params, CommittedParameterDocsAreWhatTheDeclarationGives)
{
    std::ifstream in(std::string(VEXARO_SOURCE_DIR) + "/docs/parameters.md", std::ios::binary);
    ASSERT_TRUE(in) << "docs/parameters.md is missing";
    std::ostringstream committed;
    committed << in.rdbuf();
    EXPECT_EQ(committed.str(), parametersMarkdown())
        << "regenerate it: vexaro params --markdown > docs/parameters.md";
}

TEST(Params, EveryLibraryParameterIsInTheToolsTable)
{
    std::set<std::string> names;
    for (const auto& p : parameterInfos())
        names.insert(p.name);
    for (const auto& p : vexaro::parameterInfos)
        EXPECT_EQ(names.count(p.name), 1u) << p.name;
    const std::string help = parameterHelp();
    EXPECT_NE(help.find("search radius of the ground growth (1.5 m; 0 to 1000)"), std::string::npos) << help;
    EXPECT_NE(help.find("fewest neighbours of a seed (5; 0 or more)"), std::string::npos) << help;
}

#endif
