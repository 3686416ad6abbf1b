// `vexaro eval` on a pair of small files made here, whose figures are worked out by hand.
#include "CliTestSupport.h"
#include "las/LasFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

using clitest::expectLines;
using clitest::lineStartingWith;
using clitest::run;

namespace {

/// A file of one point per class, all on a line 1 m apart (moved by `shift` in x); `name` may
/// lie in a subfolder of the scratch folder, which is created.
std::string makeFile(const std::string& name, const std::vector<int>& classes, double shift = 0)
{
    const double scale[3] = {0.01, 0.01, 0.01}, offset[3] = {1000, 2000, 0};
    auto file = vx::las::LasFile::create(4, 6, scale, offset);
    for (std::size_t i = 0; i < classes.size(); ++i) {
        vx::las::NewPoint p;
        p.x = 1000 + static_cast<double>(i) + shift;
        p.y = 2000;
        p.z = 10;
        p.classification = classes[i];
        file.addPoint(p);
    }
    const std::filesystem::path path = clitest::scratch() / name;
    std::filesystem::create_directories(path.parent_path());
    file.write(path.string());
    return path.string();
}

/// The words of a line, single-spaced.
std::string words(const std::string& line)
{
    std::istringstream in(line);
    std::string word, out;
    while (in >> word)
        out += (out.empty() ? "" : " ") + word;
    return out;
}

// 22 points. Reference: 12 ground, 4 building, 4 vegetation (3, 4, 5, 5), 2 other (1, 7).
const std::vector<int> kReference = {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 6, 6, 6, 6, 3, 4, 5, 5, 1, 7};
// Ground: 9 kept, 2 taken for vegetation, 1 for other. Building: 3 right, 1 taken for ground.
// Vegetation: 3 right (tiers may differ), 1 taken for building. Other: 1 right, the 7 taken for ground.
const std::vector<int> kClassified = {2, 2, 2, 2, 2, 2, 2, 2, 2, 3, 5, 1, 6, 6, 6, 2, 5, 4, 3, 6, 1, 2};
// Its figures: ground as in FiguresOfAHandMadePair below; building TP 3, FP 1, FN 1: F1 6/8;
// vegetation (3, 4, 5 together) TP 3, FP 2, FN 1: F1 6/9; tier: of the reference 3, 4, 5, 5
// only the 4 keeps its class: 1/4.

// A second pair without buildings, classified without a mistake.
const std::vector<int> kPlainReference = {2, 2, 5, 5, 1};

/// REF/ holds a.las (the pair above), b.las (the plain pair) and c.las (no result); RES/ holds
/// the results, a.seconds ("1.5") and b.seconds (no number).
void makeFolders()
{
    makeFile("REF/a.las", kReference);
    makeFile("RES/a.las", kClassified);
    makeFile("REF/b.las", kPlainReference);
    makeFile("RES/b.las", kPlainReference);
    makeFile("REF/c.las", kPlainReference);
    clitest::writeText("RES/a.seconds", "1.5\n");
    clitest::writeText("RES/b.seconds", "soon\n");
    clitest::writeText("REF/notes.txt", "not a LAS file, not compared\n");
}

} // namespace

TEST(CliEval, FiguresOfAHandMadePair)
{
    const std::string reference = makeFile("reference.las", kReference);
    const std::string classified = makeFile("classified.las", kClassified);
    const auto r = run({"eval", reference, classified});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    // Ground: a = 9 kept, b = 3 rejected, c = 2 accepted (the building point and the 7), d = 8.
    // Type I 3/12, type II 2/10, total 5/22; kappa: observed 17/22, chance (12*11 + 10*11)/22^2 = 0.5.
    expectLines(
        r.out,
        {{"Points compared", "Points compared: 22"},
         {"  type I ", "  type I error (ground rejected)          25.00 %   (3 of 12 ground points)"},
         {"  type II ", "  type II error (non-ground accepted)     20.00 %   (2 of 10 non-ground points)"},
         {"  total error", "  total error                             22.73 %"},
         {"  kappa", "  kappa                                    0.5455"}});
    // Confusion matrix, rows reference, columns classified.
    expectLines(
        r.out,
        {{"  ground      ", "  ground                 9           0           2           1          12"},
         {"  building    ", "  building               1           3           0           0           4"},
         {"  vegetation  ", "  vegetation             0           1           3           0           4"},
         {"  other       ", "  other                  1           0           0           1           2"},
         {"  total       ", "  total                 11           4           5           2          22"}});
    // Precision = diagonal / column, recall = diagonal / row.
    const std::string scores = r.out.substr(r.out.find("  category"));
    expectLines(scores, {{"  ground", "  ground           81.82 %     75.00 %     78.26 %"},
                         {"  building", "  building         75.00 %     75.00 %     75.00 %"},
                         {"  vegetation", "  vegetation       60.00 %     75.00 %     66.67 %"},
                         {"  other", "  other            50.00 %     50.00 %     50.00 %"}});
    EXPECT_EQ(lineStartingWith(r.out, "  overall accuracy"), "  overall accuracy 72.73 %");
}

TEST(CliEval, IdenticalFilesAreFaultless)
{
    const std::string reference = makeFile("reference.las", kReference);
    const auto r = run({"eval", reference, reference});
    ASSERT_EQ(r.status, 0) << r.err;
    expectLines(r.out, {{"  total error", "  total error                              0.00 %"},
                        {"  kappa", "  kappa                                    1.0000"},
                        {"  overall accuracy", "  overall accuracy 100.00 %"}});
}

TEST(CliEval, UndefinedFiguresShowAsNotAvailable)
{
    // No ground in either file: type I and kappa have no defined value; no building either.
    const std::string reference = makeFile("reference.las", {5, 5, 1});
    const std::string classified = makeFile("classified.las", {5, 1, 1});
    const auto r = run({"eval", reference, classified});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(lineStartingWith(r.out, "  type I "),
              "  type I error (ground rejected)              n/a   (0 of 0 ground points)");
    EXPECT_EQ(lineStartingWith(r.out, "  kappa"), "  kappa                                       n/a");
    const std::string scores = r.out.substr(r.out.find("  category"));
    EXPECT_EQ(lineStartingWith(scores, "  building"), "  building             n/a         n/a         n/a");
}

TEST(CliEval, WarnsWhenThePointsLieElsewhere)
{
    const std::string reference = makeFile("reference.las", kReference);
    const std::string moved = makeFile("moved.las", kReference, 0.5);
    const auto r = run({"eval", reference, moved});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err,
              "vexaro: warning: 22 points lie elsewhere in the two files; the comparison assumes the same "
              "points in the same order\n");
}

TEST(CliEval, TwoFilesGiveTheTierAccuracy)
{
    const auto r =
        run({"eval", makeFile("reference.las", kReference), makeFile("classified.las", kClassified)});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(lineStartingWith(r.out, "  tier accuracy"),
              "  tier accuracy (the very same class)     25.00 %   (1 of 4 vegetation points)");
    // F1 of building and vegetation, from the definitions above.
    const std::string scores = r.out.substr(r.out.find("  category"));
    EXPECT_NE(lineStartingWith(scores, "  building").find("75.00 %", 38), std::string::npos);
    EXPECT_NE(lineStartingWith(scores, "  vegetation").find("66.67 %", 38), std::string::npos);
}

TEST(CliEval, ReferenceClassZeroIsLeftOut)
{
    const auto r =
        run({"eval", makeFile("reference.las", {0, 2, 2, 0}), makeFile("classified.las", {2, 2, 1, 5})});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(lineStartingWith(r.out, "Points compared"),
              "Points compared: 2   (2 more of reference class 0, never classified, left out)");
    EXPECT_EQ(lineStartingWith(r.out, "  type I "),
              "  type I error (ground rejected)          50.00 %   (1 of 2 ground points)");
}

TEST(CliEval, TwoFilesAsCsv)
{
    const std::string reference = makeFile("reference.las", kReference);
    const std::string classified = makeFile("classified.las", kClassified);
    clitest::writeText("classified.seconds", "2.25");
    const auto r = run({"eval", "--csv", reference, classified});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "file,points,ground_type_I_pct,ground_type_II_pct,ground_total_error_pct,kappa,"
                     "building_f1_pct,vegetation_f1_pct,tier_accuracy_pct,seconds,status\n" +
                         classified + ",22,25.00,20.00,22.73,0.5455,75.00,66.67,25.00,2.25,ok\n");
}

TEST(CliEval, TwoFilesOfDifferentSizesAreAnError)
{
    const std::string reference = makeFile("reference.las", {2, 2, 5});
    const std::string classified = makeFile("classified.las", {2, 5});
    const auto r = run({"eval", reference, classified});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "vexaro: error: '" + reference + "' holds 3 points and '" + classified +
                         "' 2; eval compares the same points in the same order\n");
}

TEST(CliEval, FoldersGiveATableWithAMeanRow)
{
    makeFolders();
    const auto r = run({"eval", "REF", "RES"});
    // c.las has no result: the table is printed and the status says the set is incomplete.
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "vexaro: warning: 'RES/b.seconds' should hold one number of seconds\n");
    const std::string header = lineStartingWith(r.out, "file");
    EXPECT_EQ(words(header), "file points type I % type II % total % kappa building F1 % vegetation F1 % "
                             "tier % seconds");
    const std::string a = lineStartingWith(r.out, "a.las"), b = lineStartingWith(r.out, "b.las"),
                      mean = lineStartingWith(r.out, "mean");
    EXPECT_EQ(words(a), "a.las 22 25.00 20.00 22.73 0.5455 75.00 66.67 25.00 1.50");
    EXPECT_EQ(words(b), "b.las 5 0.00 0.00 0.00 1.0000 n/a 100.00 100.00 -");
    EXPECT_EQ(words(lineStartingWith(r.out, "c.las")), "c.las missing: no result file");
    // Means over a and b; building F1 and seconds only from a: b has no value for them.
    // Kappa: a 12/22, b 1 -> 34/44; total error (5/22 + 0) / 2.
    EXPECT_EQ(words(mean), "mean 27 12.50 10.00 11.36 0.7727 75.00 83.33 62.50 1.50");
    // The columns line up.
    EXPECT_EQ(a.size(), header.size());
    EXPECT_EQ(b.size(), header.size());
    EXPECT_EQ(mean.size(), header.size());
    EXPECT_NE(r.out.find("3 files: 2 compared, 1 missing, 0 failed."), std::string::npos);
    // The text file in REF is no row.
    EXPECT_EQ(r.out.find("notes"), std::string::npos);
}

TEST(CliEval, FoldersAsCsv)
{
    makeFolders();
    const auto r = run({"eval", "REF", "RES", "--csv"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "file,points,ground_type_I_pct,ground_type_II_pct,ground_total_error_pct,kappa,"
                     "building_f1_pct,vegetation_f1_pct,tier_accuracy_pct,seconds,status\n"
                     "a.las,22,25.00,20.00,22.73,0.5455,75.00,66.67,25.00,1.50,ok\n"
                     "b.las,5,0.00,0.00,0.00,1.0000,,100.00,100.00,,ok\n"
                     "c.las,,,,,,,,,,missing\n"
                     "mean,27,12.50,10.00,11.36,0.7727,75.00,83.33,62.50,1.50,\n");
}

TEST(CliEval, FolderRowOfDifferentSizesSaysWhy)
{
    makeFile("REF/a.las", kReference);
    makeFile("RES/a.las", kReference);
    makeFile("REF/d.las", {2, 2, 5});
    makeFile("RES/d.las", {2, 5});
    const auto r = run({"eval", "REF", "RES"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(words(lineStartingWith(r.out, "d.las")),
              "d.las error: 'REF/d.las' holds 3 points and 'RES/d.las' 2; eval compares the same points in "
              "the same order");
    // The failed file takes no part in the mean: a alone, faultless.
    EXPECT_EQ(words(lineStartingWith(r.out, "mean")), "mean 22 0.00 0.00 0.00 1.0000 100.00 100.00 100.00 -");
    EXPECT_NE(r.out.find("2 files: 1 compared, 0 missing, 1 failed."), std::string::npos);
}

TEST(CliEval, EveryFileCompared)
{
    makeFile("REF/a.las", kReference);
    makeFile("RES/a.las", kClassified);
    const auto r = run({"eval", "REF", "RES"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(words(lineStartingWith(r.out, "mean")), "mean 22 25.00 20.00 22.73 0.5455 75.00 66.67 25.00 -");
}

TEST(CliEval, FolderMistakes)
{
    makeFile("REF/a.las", kReference);
    std::filesystem::create_directories(clitest::scratch() / "EMPTY");
    auto r = run({"eval", "REF", "a.las"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "vexaro: error: cannot read result folder 'a.las': no such folder\n");
    makeFile("b.las", kReference);
    r = run({"eval", "REF", "b.las"});
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(
        r.err,
        "vexaro: error: eval compares two files or two folders; 'REF' is a folder and 'b.las' is not\n");
    r = run({"eval", "EMPTY", "REF"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "vexaro: error: no LAS files (*.las) in the reference folder 'EMPTY'\n");
}
