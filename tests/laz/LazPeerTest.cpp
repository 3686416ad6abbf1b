// LAZ against an independent codec, laspy with lazrs: files we write decode there to the same
// points, and files written there decode here to the same points. The peer lives in a virtual
// environment of the build folder (tests/laz/laspy_venv.sh); the tests skip when it cannot be had.
#include "RecordTestFiles.h"
#include "common/TestSupport.h"
#include "las/RecordStream.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <sys/wait.h>

using vx::las::LasFile;

namespace {

using vxtest::CommandResult;
using vxtest::runCommand;

std::string peerScript()
{
    return std::string(VEXARO_SOURCE_DIR) + "/tests/laz/laspy_peer.py";
}

struct PeerPoint {
    long long x, y, z, intensity, returnNumber, numberOfReturns, classification;
    double gpsTime;
};

std::vector<PeerPoint> readDump(const std::string& path)
{
    std::vector<PeerPoint> points;
    std::ifstream in(path);
    PeerPoint p{};
    while (in >> p.x >> p.y >> p.z >> p.intensity >> p.returnNumber >> p.numberOfReturns >>
           p.classification >> p.gpsTime)
        points.push_back(p);
    return points;
}

void expectSamePoints(const LasFile& ours, const std::vector<PeerPoint>& theirs)
{
    ASSERT_EQ(theirs.size(), ours.size());
    for (std::size_t i = 0; i < ours.size(); ++i) {
        const PeerPoint& p = theirs[i];
        SCOPED_TRACE("point " + std::to_string(i));
        EXPECT_EQ(p.x, ours.rawX(i));
        EXPECT_EQ(p.y, ours.rawY(i));
        EXPECT_EQ(p.z, ours.rawZ(i));
        EXPECT_EQ(p.intensity, ours.intensity(i));
        EXPECT_EQ(p.returnNumber, ours.returnNumber(i));
        EXPECT_EQ(p.numberOfReturns, ours.numberOfReturns(i));
        EXPECT_EQ(p.classification, ours.classification(i));
        EXPECT_EQ(p.gpsTime, ours.gpsTime(i));
        if (::testing::Test::HasFailure())
            return; // one point's report is enough
    }
}

#define SKIP_WITHOUT_PEER(python)                                                                            \
    if (!vx::las::lazAvailable())                                                                            \
        GTEST_SKIP()                                                                                         \
            << "LAZ support is not built in (LASzip neither installed nor fetched at configure time)";       \
    std::string why;                                                                                         \
    const std::string python = vxtest::laspyPython(why);                                                     \
    if (python.empty())                                                                                      \
    GTEST_SKIP() << "laspy with lazrs is not available: " << why

} // namespace

TEST(LazPeer, LaspyDecodesOurLazToTheSamePoints)
{
    SKIP_WITHOUT_PEER(python);
    const std::string folder = laztest::scratchFolder("peerdecode");
    for (const auto& [minor, format] :
         std::vector<std::pair<uint8_t, uint8_t>>{{2, 1}, {2, 3}, {4, 6}, {2, 0}}) {
        SCOPED_TRACE("format " + std::to_string(format));
        const LasFile las = laztest::makeFile(minor, format, 2000, 5u + format);
        const std::string laz = folder + "/ours.laz", dump = folder + "/dump.txt";
        las.write(laz);
        const CommandResult r =
            runCommand("'" + python + "' '" + peerScript() + "' dump '" + laz + "' '" + dump + "'");
        ASSERT_EQ(r.status, 0) << r.out;
        expectSamePoints(las, readDump(dump));
    }
}

TEST(LazPeer, OurReaderDecodesLaspyLazToTheSamePoints)
{
    SKIP_WITHOUT_PEER(python);
    const std::string folder = laztest::scratchFolder("peerencode");
    for (const uint8_t format : {1, 3, 6}) {
        SCOPED_TRACE("format " + std::to_string(format));
        // The points as text for the peer, from a file of ours that also serves as the expectation.
        const LasFile expected = laztest::makeFile(format >= 6 ? 4 : 2, format, 1500, 21u + format);
        const std::string text = folder + "/points.txt", laz = folder + "/theirs.laz";
        {
            std::ofstream out(text);
            out.precision(17);
            for (std::size_t i = 0; i < expected.size(); ++i)
                out << expected.rawX(i) << ' ' << expected.rawY(i) << ' ' << expected.rawZ(i) << ' '
                    << expected.intensity(i) << ' ' << expected.returnNumber(i) << ' '
                    << expected.numberOfReturns(i) << ' ' << expected.classification(i) << ' '
                    << expected.gpsTime(i) << '\n';
        }
        const CommandResult r = runCommand("'" + python + "' '" + peerScript() + "' make '" + text + "' '" +
                                           laz + "' " + std::to_string(format));
        ASSERT_EQ(r.status, 0) << r.out;
        const LasFile theirs = LasFile::read(laz);
        EXPECT_EQ(theirs.header().pointFormat, format);
        std::vector<PeerPoint> points;
        for (std::size_t i = 0; i < theirs.size(); ++i)
            points.push_back({theirs.rawX(i), theirs.rawY(i), theirs.rawZ(i), theirs.intensity(i),
                              theirs.returnNumber(i), theirs.numberOfReturns(i), theirs.classification(i),
                              theirs.gpsTime(i)});
        expectSamePoints(expected, points);
    }
}
