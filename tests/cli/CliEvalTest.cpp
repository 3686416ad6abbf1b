// `vexaro eval` on a pair of small files made here, whose figures are worked out by hand.
#include "CliTestSupport.h"
#include "las/LasFile.h"

#include <gtest/gtest.h>

using clitest::expectLines;
using clitest::lineStartingWith;
using clitest::run;

namespace {

/// A file of one point per class, all on a line 1 m apart (moved by `shift` in x).
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
    const std::string path = (clitest::scratch() / name).string();
    file.write(path);
    return path;
}

// 22 points. Reference: 12 ground, 4 building, 4 vegetation (3, 4, 5, 5), 2 other (1, 7).
const std::vector<int> kReference = {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 6, 6, 6, 6, 3, 4, 5, 5, 1, 7};
// Ground: 9 kept, 2 taken for vegetation, 1 for other. Building: 3 right, 1 taken for ground.
// Vegetation: 3 right (tiers may differ), 1 taken for building. Other: 1 right, the 7 taken for ground.
const std::vector<int> kClassified = {2, 2, 2, 2, 2, 2, 2, 2, 2, 3, 5, 1, 6, 6, 6, 2, 5, 4, 3, 6, 1, 2};

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
