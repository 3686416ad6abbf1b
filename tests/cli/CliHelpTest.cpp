// Help texts and the version, as printed by the real executable.
#include "CliTestSupport.h"

#include <gtest/gtest.h>

using clitest::run;

TEST(CliHelp, GeneralHelpListsEveryCommand)
{
    for (const std::string flag : {"--help", "-h", "help"}) {
        const auto r = run({flag});
        EXPECT_EQ(r.status, 0) << flag;
        EXPECT_EQ(r.err, "");
        EXPECT_EQ(r.out.rfind("vexaro: classification of airborne LiDAR point clouds", 0), 0u);
        for (const std::string command :
             {"classify INPUT.las -o OUTPUT.las", "demo [--out DIR]", "scene -o INPUT.las", "info FILE.las",
              "eval REFERENCE.las CLASSIFIED.las", "devices"})
            EXPECT_NE(r.out.find("  " + command), std::string::npos) << command;
        EXPECT_NE(r.out.find("Exit status: 0 done, 1 failed"), std::string::npos);
    }
}

TEST(CliHelp, NoCommandPrintsTheHelpAsAnError)
{
    const auto r = run({});
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, run({"--help"}).out);
}

TEST(CliHelp, Version)
{
    const auto r = run({"--version"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "vexaro 0.1.0\n");
}

TEST(CliHelp, EachCommandHasItsOwnHelp)
{
    for (const std::string command : {"classify", "demo", "scene", "info", "eval", "devices"}) {
        const auto r = run({command, "--help"});
        EXPECT_EQ(r.status, 0) << command;
        EXPECT_EQ(r.err, "") << command;
        EXPECT_EQ(r.out.rfind("Usage: vexaro " + command, 0), 0u) << r.out;
        EXPECT_EQ(run({command, "-h"}).out, r.out) << command;
        EXPECT_EQ(run({"help", command}).out, r.out) << command;
    }
}

TEST(CliHelp, ClassifyHelpNamesOptionsAndEveryParameter)
{
    const auto r = run({"classify", "--help"});
    for (const std::string option : {"-o, --output FILE", "--normals BASENAME", "--preview FILE.png",
                                     "--set Name=value", "--params FILE", "--backend B", "--layout L",
                                     "--precision P", "--log FILE", "-v, --verbose", "-q, --quiet"})
        EXPECT_NE(r.out.find("  " + option), std::string::npos) << option;
    for (const std::string name : {"NNSearchRange_NormalVectors",
                                   "Inner_NormalVectors",
                                   "MinimalNumberOfNN",
                                   "ResetOptionalRange",
                                   "ResetOptionalClass",
                                   "SeedSearchMaxHindeks",
                                   "GroundGrowthIterations",
                                   "GroundGrowthDistanceFromPlane",
                                   "GroundGrowthMaxCosinusPar2",
                                   "GroundGrowthMinCosinus",
                                   "GroundGrowthRange",
                                   "GroundGrowthRangeLowest",
                                   "GroundGrowthMaxHeightDifference",
                                   "LowPointFilteringRange",
                                   "BuildingRange",
                                   "BuildingGroundRange",
                                   "BuildingDfPBuilding",
                                   "BuildingMinCosBuilding",
                                   "BuildingMinNoN",
                                   "BuildingProcOfBP",
                                   "BuildingProcOfGhosts",
                                   "BuildingMinHeight",
                                   "Building2Iterations",
                                   "Building2Range",
                                   "Building2DistFPlane",
                                   "Building3Iterations",
                                   "Building3GroundRange",
                                   "Building3DetailsHeight",
                                   "VegetationIterations",
                                   "VegetationRange",
                                   "VegetationDfG",
                                   "VegetationMaxCos",
                                   "VegetationProcOfChaos",
                                   "VegetationProcOfGhosts",
                                   "VegetationProcOfOrder",
                                   "VegetationProcOfPlant",
                                   "VegetationLowLimit",
                                   "VegetationHighLimit",
                                   "VegetationRatio",
                                   "Threads",
                                   "HostThreads",
                                   "MessageLevel",
                                   "FacadeMessageLevel",
                                   "CudaDevice",
                                   "NormalVectorDecompositionSize",
                                   "SeedCellSize",
                                   "GridCellSize",
                                   "BuildingCompanionClass"})
        EXPECT_NE(r.out.find("    " + name + " "), std::string::npos) << name;
}

TEST(CliHelp, DemoHelpNamesItsFilesAndOptions)
{
    const auto r = run({"demo", "--help"});
    for (const std::string text : {"--out DIR", "--points N", "--seed S", "scene.las", "truth.las",
                                   "classified.las", "preview.png", "--set Name=value", "--backend B"})
        EXPECT_NE(r.out.find(text), std::string::npos) << text;
}
