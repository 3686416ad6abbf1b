// `vexaro info` on the shared sample files, against their headers and class counts as read by an
// independent reader (laspy) when these tests were written.
#include "CliTestSupport.h"

#include <gtest/gtest.h>

using clitest::lineStartingWith;
using clitest::run;
using clitest::sample;

TEST(CliInfo, WarsawSample)
{
    const auto r = run({"info", sample("warsaw_small.las")});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    const std::string expected =
        "File            " + sample("warsaw_small.las") +
        "\n"
        "LAS version     1.2\n"
        "Point format    3 (34-byte records)\n"
        "Points          3,000\n"
        "Header          227 bytes, points from byte 284, 1 VLRs, 0 EVLRs\n"
        "Created         day 315 of 2025, system \"\", software \"LASzip DLL 3.4 r3 (191111)\"\n"
        "Scale           0.01 0.01 0.01\n"
        "Offset          639000 485000 0\n"
        "Bounds x        639913.26 to 639946.75\n"
        "Bounds y        485143.14 to 485175.91\n"
        "Bounds z        84.70 to 104.55\n"
        "\n"
        "Classes\n"
        "  class  name                            points      share\n"
        "      0  Created, never classified          433    14.43 %\n"
        "      2  Ground                           1,381    46.03 %\n"
        "      3  Low vegetation                     257     8.57 %\n"
        "      4  Medium vegetation                   27     0.90 %\n"
        "      5  High vegetation                    902    30.07 %\n"
        "         total                            3,000\n";
    EXPECT_EQ(r.out, expected);
}

TEST(CliInfo, SampleCUsesTheOlderClassNamesOfItsPointFormat)
{
    const auto r = run({"info", sample("sample_c.las")});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(lineStartingWith(r.out, "LAS version"), "LAS version     1.2");
    EXPECT_EQ(lineStartingWith(r.out, "Points"), "Points          14,408");
    EXPECT_EQ(lineStartingWith(r.out, "Created"),
              "Created         day 3 of 2018, system \"libLAS\", software \"libLAS 1.8.1\"");
    EXPECT_EQ(lineStartingWith(r.out, "Offset"),
              "Offset          674521.920013428 1206740.08001709 627.530029296875");
    EXPECT_EQ(lineStartingWith(r.out, "Bounds x"), "Bounds x        674521.92 to 674605.32");
    EXPECT_EQ(lineStartingWith(r.out, "Bounds y"), "Bounds y        1206740.08 to 1206814.96");
    EXPECT_EQ(lineStartingWith(r.out, "Bounds z"), "Bounds z        627.53 to 656.23");
    EXPECT_EQ(lineStartingWith(r.out, "      6"),
              "      6  Building                        12,525    86.93 %");
    EXPECT_EQ(lineStartingWith(r.out, "     11"),
              "     11  Reserved                             2     0.01 %");
    EXPECT_EQ(lineStartingWith(r.out, "     14"),
              "     14  Reserved                            45     0.31 %");
    EXPECT_EQ(lineStartingWith(r.out, "     31"),
              "     31  Reserved                           339     2.35 %");
    EXPECT_EQ(lineStartingWith(r.out, "         total"), "         total                           14,408");
}

TEST(CliInfo, IgnSampleInLas14Format7)
{
    const auto r = run({"info", sample("ign_hd_0382_6565_decimated_cropped.las")});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(lineStartingWith(r.out, "LAS version"), "LAS version     1.4");
    EXPECT_EQ(lineStartingWith(r.out, "Point format"), "Point format    7 (36-byte records)");
    EXPECT_EQ(lineStartingWith(r.out, "Points"), "Points          218,731");
    EXPECT_EQ(lineStartingWith(r.out, "Header"),
              "Header          375 bytes, points from byte 1847, 2 VLRs, 0 EVLRs");
    EXPECT_EQ(lineStartingWith(r.out, "Created"),
              "Created         day 62 of 2025, system \"PDAL\", software \"PDAL 2.8.0 (96cf05)\"");
    EXPECT_EQ(lineStartingWith(r.out, "Scale"), "Scale           0.01 0.01 0.01");
    EXPECT_EQ(lineStartingWith(r.out, "Offset"), "Offset          0 0 0");
    EXPECT_EQ(lineStartingWith(r.out, "Bounds x"), "Bounds x        382250.00 to 383000.00");
    EXPECT_EQ(lineStartingWith(r.out, "Bounds y"), "Bounds y        6564000.00 to 6565000.00");
    EXPECT_EQ(lineStartingWith(r.out, "Bounds z"), "Bounds z        0.60 to 26.66");
    // Format 7 has the full class table: 9 water, 17 bridge deck, 64 and above user defined.
    EXPECT_EQ(lineStartingWith(r.out, "      1"),
              "      1  Unclassified                     9,218     4.21 %");
    EXPECT_EQ(lineStartingWith(r.out, "      2"),
              "      2  Ground                         109,483    50.05 %");
    EXPECT_EQ(lineStartingWith(r.out, "      3"),
              "      3  Low vegetation                   2,299     1.05 %");
    EXPECT_EQ(lineStartingWith(r.out, "      4"),
              "      4  Medium vegetation                5,952     2.72 %");
    EXPECT_EQ(lineStartingWith(r.out, "      5"),
              "      5  High vegetation                 42,105    19.25 %");
    EXPECT_EQ(lineStartingWith(r.out, "      6"),
              "      6  Building                        49,553    22.65 %");
    EXPECT_EQ(lineStartingWith(r.out, "      9"),
              "      9  Water                                1     0.00 %");
    EXPECT_EQ(lineStartingWith(r.out, "     17"),
              "     17  Bridge deck                         24     0.01 %");
    EXPECT_EQ(lineStartingWith(r.out, "     65"),
              "     65  User defined                        89     0.04 %");
    EXPECT_EQ(lineStartingWith(r.out, "     67"),
              "     67  User defined                         7     0.00 %");
}
