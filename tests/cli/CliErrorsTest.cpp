// Mistakes a person makes: each gives a message to act on and a non-zero exit status, before any
// long work starts. Status 2 is a mistake on the command line, 1 a file or data problem.
#include "CliTestSupport.h"
#include "common/TestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>

using clitest::run;
using clitest::sample;

namespace {

void expectError(const std::vector<std::string>& args, int status, const std::string& message)
{
    const auto r = run(args);
    EXPECT_EQ(r.status, status) << message;
    EXPECT_EQ(r.err, "vexaro: error: " + message + "\n");
    EXPECT_EQ(r.out, "");
}

} // namespace

TEST(CliErrors, UnknownCommandOrOption)
{
    expectError({"frobnicate"}, 2, "unknown command 'frobnicate' (see 'vexaro --help')");
    expectError({"--frob"}, 2, "unknown option '--frob' (see 'vexaro --help')");
    expectError({"info", "--all"}, 2, "unknown option '--all' (see 'vexaro info --help')");
    expectError({"classify", "a.las", "-o", "b.las", "--fast"}, 2,
                "unknown option '--fast' (see 'vexaro classify --help')");
    expectError({"devices", "extra"}, 2, "unexpected argument 'extra' (see 'vexaro devices --help')");
    expectError({"info", "a.las", "b.las"}, 2, "unexpected argument 'b.las' (see 'vexaro info --help')");
}

TEST(CliErrors, MissingArguments)
{
    expectError({"classify"}, 2, "classify needs an input file (see 'vexaro classify --help')");
    expectError({"classify", sample("warsaw_small.las")}, 2, "classify needs an output file: -o OUTPUT.las");
    expectError({"classify", "in.las", "-o"}, 2, "option '-o' needs a value");
    expectError({"classify", "in.las", "-o", "out.las", "--set"}, 2, "option '--set' needs a value");
    expectError({"info"}, 2, "info needs a LAS file (see 'vexaro info --help')");
    expectError(
        {"eval", "a.las"}, 2,
        "eval needs two LAS files (REFERENCE.las CLASSIFIED.las) or two folders (REF_DIR RESULT_DIR)");
}

TEST(CliErrors, BadChoicesAndNumbers)
{
    const std::string in = sample("warsaw_small.las");
    expectError({"classify", in, "-o", "o.las", "--backend", "gpu"}, 2,
                "--backend takes auto, cpu or cuda, not 'gpu'");
    expectError({"classify", in, "-o", "o.las", "--layout", "rows"}, 2,
                "--layout takes soa or aos, not 'rows'");
    expectError({"classify", in, "-o", "o.las", "--precision", "half"}, 2,
                "--precision takes float or double, not 'half'");
    expectError({"demo", "--points", "5"}, 2,
                "option '--points' takes a whole number from 10000 to 10000000, not '5'");
    expectError({"demo", "--points=lots"}, 2,
                "option '--points' takes a whole number from 10000 to 10000000, not 'lots'");
    expectError({"demo", "--seed", "-1"}, 2,
                "option '--seed' takes a whole number from 0 to 9223372036854775807, not '-1'");
    expectError({"demo", "--quiet=yes"}, 2, "option '--quiet' takes no value");
}

TEST(CliErrors, UnknownParameterNamesTheClosestOne)
{
    const std::string in = sample("warsaw_small.las");
    expectError({"classify", in, "-o", "o.las", "--set", "GroundGrowthRang=2"}, 2,
                "--set GroundGrowthRang=2: unknown parameter \"GroundGrowthRang\"; did you mean "
                "\"GroundGrowthRange\"?");
    expectError({"classify", in, "-o", "o.las", "--set", "vegetationratio=0.4"}, 2,
                "--set vegetationratio=0.4: unknown parameter \"vegetationratio\"; did you mean "
                "\"VegetationRatio\"?");
    expectError({"classify", in, "-o", "o.las", "--set", "Speed=9"}, 2,
                "--set Speed=9: unknown parameter \"Speed\"; 'vexaro classify --help' lists the parameters");
    expectError(
        {"demo", "--set", "BuildingMinNon=4"}, 2,
        "--set BuildingMinNon=4: unknown parameter \"BuildingMinNon\"; did you mean \"BuildingMinNoN\"?");
}

TEST(CliErrors, MalformedValues)
{
    const std::string in = sample("warsaw_small.las");
    auto classify = [&](const std::string& setting) {
        return std::vector<std::string>{"classify", in, "-o", "o.las", "--set", setting};
    };
    expectError(classify("GroundGrowthRange=abc"), 2,
                "--set GroundGrowthRange=abc: \"abc\" is not a number (GroundGrowthRange takes a number such "
                "as 1.5)");
    expectError(classify("GroundGrowthRange=1.5m"), 2,
                "--set GroundGrowthRange=1.5m: \"1.5m\" is not a number (GroundGrowthRange takes a number "
                "such as 1.5)");
    expectError(classify("GroundGrowthRange=nan"), 2,
                "--set GroundGrowthRange=nan: \"nan\" is not a number (GroundGrowthRange takes a number such "
                "as 1.5)");
    expectError(
        classify("BuildingMinNoN=2.5"), 2,
        "--set BuildingMinNoN=2.5: \"2.5\" is not a whole number (BuildingMinNoN takes a whole number)");
    expectError(classify("GroundGrowthRange"), 2, "--set GroundGrowthRange: expected Name=value");
    expectError(classify("GroundGrowthRange="), 2,
                "--set GroundGrowthRange=: missing value for GroundGrowthRange");
    expectError(classify("=3"), 2, "--set =3: missing parameter name before '='");
    expectError(classify("SeedCellSize=0"), 2, "--set SeedCellSize=0: SeedCellSize must be greater than 0");
    expectError(classify("GridCellSize=-2"), 2, "--set GridCellSize=-2: GridCellSize must not be negative");
}

TEST(CliErrors, ParameterFileProblems)
{
    const std::string in = sample("warsaw_small.las");
    expectError({"classify", in, "-o", "o.las", "--params", "none.txt"}, 1,
                "cannot read parameter file 'none.txt': No such file or directory");
    const std::string params = clitest::writeText(
        "p.txt", "# tuned\nGroundGrowthRange = 2\n\nGroundGrowthRangeLowst = 0.2  # typo\n");
    expectError(
        {"classify", in, "-o", "o.las", "--params", params}, 2,
        params +
            ":4: unknown parameter \"GroundGrowthRangeLowst\"; did you mean \"GroundGrowthRangeLowest\"?");
    const std::string bad = clitest::writeText("q.txt", "VegetationRatio 0.5\n");
    expectError({"classify", in, "-o", "o.las", "--params", bad}, 2, bad + ":1: expected Name=value");
}

TEST(CliErrors, InputThatCannotBeRead)
{
    expectError({"classify", "missing.las", "-o", "o.las"}, 1,
                "cannot read input 'missing.las': No such file or directory");
    std::filesystem::create_directories(clitest::scratch() / "folder.las");
    // A folder stands for the tiles in it.
    expectError({"classify", "folder.las", "-o", "o.las"}, 1,
                "the folder 'folder.las' holds no .las or .laz file");
    expectError({"info", "missing.las"}, 1, "cannot read input 'missing.las': No such file or directory");
    expectError({"eval", sample("warsaw_small.las"), "missing.las"}, 1,
                "cannot read input 'missing.las': No such file or directory");
}

TEST(CliErrors, FileThatIsNotLas)
{
    const std::string text = clitest::writeText("notes.las", "just some text, not a point cloud\n");
    for (const std::vector<std::string>& args : {std::vector<std::string>{"info", text},
                                                 std::vector<std::string>{"classify", text, "-o", "o.las"}}) {
        const auto r = run(args);
        EXPECT_EQ(r.status, 1);
        EXPECT_NE(r.err.find("vexaro: error: "), std::string::npos) << r.err;
        EXPECT_NE(r.err.find("notes.las"), std::string::npos) << r.err;
        EXPECT_FALSE(std::filesystem::exists(clitest::scratch() / "o.las"));
    }
}

TEST(CliErrors, OutputThatCannotBeWrittenIsFoundBeforeTheWork)
{
    const std::string in = sample("warsaw_small.las");
    expectError({"classify", in, "-o", "no/such/folder/o.las"}, 1,
                "cannot write output 'no/such/folder/o.las': No such file or directory");
    std::filesystem::create_directories(clitest::scratch() / "out.las");
    expectError({"classify", in, "-o", "out.las"}, 1, "cannot write output 'out.las': it is a folder");
    expectError({"classify", in, "-o", "o.las", "--preview", "no/p.png"}, 1,
                "cannot write preview 'no/p.png': No such file or directory");
    expectError({"classify", in, "-o", "o.las", "--normals", "no/n"}, 1,
                "cannot write normals file 'no/n.txt': No such file or directory");
    expectError({"classify", in, "-o", "o.las", "--log", "no/log.txt"}, 1,
                "cannot write log file 'no/log.txt': No such file or directory");
    expectError({"classify", in, "-o", in}, 1,
                "the output '" + in + "' is the input file; choose another output name");
    // None of these runs created the output.
    EXPECT_FALSE(std::filesystem::exists(clitest::scratch() / "o.las"));
}

TEST(CliErrors, DemoFolderThatIsAFile)
{
    clitest::writeText("taken", "x");
    expectError({"demo", "--out", "taken"}, 1, "cannot create folder 'taken': a file of that name exists");
}

TEST(CliErrors, EvalOfDifferentClouds)
{
    const auto r = run({"eval", sample("warsaw_small.las"), sample("sample_c.las")});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "vexaro: error: '" + sample("warsaw_small.las") + "' holds 3,000 points and '" +
                         sample("sample_c.las") +
                         "' 14,408; eval compares the same points in the same order\n");
}

TEST(CliErrors, CudaBackendWhereThereIsNone)
{
    if (vxtest::cudaAvailable())
        GTEST_SKIP() << "a CUDA device is present";
    const auto r = run({"classify", sample("warsaw_small.las"), "-o", "o.las", "--backend", "cuda"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err.rfind("vexaro: error: cannot use the cuda backend: ", 0), 0u) << r.err;
    EXPECT_FALSE(std::filesystem::exists(clitest::scratch() / "o.las"));
}
