// `vexaro info` on the shared sample files, against their headers and class counts as read by an
// independent reader (laspy) when these tests were written.
#include "CliTestSupport.h"

#include <gtest/gtest.h>

using clitest::expectLines;
using clitest::run;
using clitest::sample;

TEST(CliInfo, WarsawSample)
{
    const auto r = run({"info", sample("warsaw_small.las")});
    ASSERT_EQ(r.status, 0) << r.err;
    // Its WKT record is empty: the profile warns that the units are unknown.
    EXPECT_EQ(r.err, "vexaro: warning: the file names no length unit; lengths are read as metres (give "
                     "--units metres, feet or us-feet to say which)\n");
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
        "         total                            3,000\n"
        "\n"
        "Profile\n";
    // The profile's figures are checked in DataProfileSamplesTest.
    EXPECT_EQ(r.out.substr(0, expected.size()), expected);
    expectLines(r.out, {{"  Units", "  Units            unknown (read as metres)"}});
}

TEST(CliInfo, UnitsOptionOverridesTheFile)
{
    const auto r = run({"info", sample("warsaw_small.las"), "--units", "metres"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    expectLines(r.out, {{"  Units", "  Units            metre horizontal and vertical (--units)"}});
    EXPECT_NE(r.out.find(" pts/m², spacing "), std::string::npos);

    const auto feet = run({"info", "--units=us-ft", sample("ign_hd_corse.las")});
    ASSERT_EQ(feet.status, 0) << feet.err;
    expectLines(feet.out,
                {{"  Units", "  Units            US survey foot horizontal and vertical (--units)"}});
}

TEST(CliInfo, UnknownUnitsAreAMistakeOnTheCommandLine)
{
    const auto r = run({"info", sample("warsaw_small.las"), "--units", "yards"});
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "vexaro: error: unknown unit 'yards' for --units (use metres, feet or us-feet)\n");
    const auto missing = run({"info", sample("warsaw_small.las"), "--units"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_NE(missing.err.find("'--units' needs a value"), std::string::npos);
}

TEST(CliInfo, ProfileOfAFileWithItsCoordinateSystem)
{
    const auto r = run({"info", sample("ign_hd_0382_6565_decimated_cropped.las")});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    expectLines(r.out, {{"  Units", "  Units            metre horizontal and vertical (WKT)"}});
    EXPECT_NE(r.out.find("\nProfile\n  Units"), std::string::npos);
    for (const char* line : {"  Extent ", "  Heights ", "  Density ", "  Last returns ", "  Returns/pulse ",
                             "  Noise suspicion "})
        EXPECT_NE(r.out.find(line), std::string::npos) << line;
}

TEST(CliInfo, SampleCUsesTheOlderClassNamesOfItsPointFormat)
{
    const auto r = run({"info", sample("sample_c.las")});
    ASSERT_EQ(r.status, 0) << r.err;
    expectLines(r.out,
                {{"LAS version", "LAS version     1.2"},
                 {"Points", "Points          14,408"},
                 {"Created", "Created         day 3 of 2018, system \"libLAS\", software \"libLAS 1.8.1\""},
                 {"Offset", "Offset          674521.920013428 1206740.08001709 627.530029296875"},
                 {"Bounds x", "Bounds x        674521.92 to 674605.32"},
                 {"Bounds y", "Bounds y        1206740.08 to 1206814.96"},
                 {"Bounds z", "Bounds z        627.53 to 656.23"},
                 {"      6", "      6  Building                        12,525    86.93 %"},
                 {"     11", "     11  Reserved                             2     0.01 %"},
                 {"     14", "     14  Reserved                            45     0.31 %"},
                 {"     31", "     31  Reserved                           339     2.35 %"},
                 {"         total", "         total                           14,408"}});
}

TEST(CliInfo, IgnSampleInLas14Format7)
{
    const auto r = run({"info", sample("ign_hd_0382_6565_decimated_cropped.las")});
    ASSERT_EQ(r.status, 0) << r.err;
    expectLines(r.out, {{"LAS version", "LAS version     1.4"},
                        {"Point format", "Point format    7 (36-byte records)"},
                        {"Points", "Points          218,731"},
                        {"Header", "Header          375 bytes, points from byte 1847, 2 VLRs, 0 EVLRs"},
                        {"Created",
                         "Created         day 62 of 2025, system \"PDAL\", software \"PDAL 2.8.0 (96cf05)\""},
                        {"Scale", "Scale           0.01 0.01 0.01"},
                        {"Offset", "Offset          0 0 0"},
                        {"Bounds x", "Bounds x        382250.00 to 383000.00"},
                        {"Bounds y", "Bounds y        6564000.00 to 6565000.00"},
                        {"Bounds z", "Bounds z        0.60 to 26.66"}});
    // Format 7 has the full class table: 9 water, 17 bridge deck, 64 and above user defined.
    expectLines(r.out, {{"      1", "      1  Unclassified                     9,218     4.21 %"},
                        {"      2", "      2  Ground                         109,483    50.05 %"},
                        {"      3", "      3  Low vegetation                   2,299     1.05 %"},
                        {"      4", "      4  Medium vegetation                5,952     2.72 %"},
                        {"      5", "      5  High vegetation                 42,105    19.25 %"},
                        {"      6", "      6  Building                        49,553    22.65 %"},
                        {"      9", "      9  Water                                1     0.00 %"},
                        {"     17", "     17  Bridge deck                         24     0.01 %"},
                        {"     65", "     65  User defined                        89     0.04 %"},
                        {"     67", "     67  User defined                         7     0.00 %"}});
}
