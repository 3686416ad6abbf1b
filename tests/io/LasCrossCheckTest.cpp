// The sample files decoded by laspy, an independent reader, agree with the codec point by point.
// Skipped where laspy cannot be installed into the build folder (tests/laz/laspy_venv.sh).
#include "LasTestImage.h"
#include "common/TestSupport.h"
#include "las/LasFile.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

using vx::las::LasFile;

namespace {

const char* const kDumpScript = R"(import sys
import laspy
import numpy as np
las = laspy.read(sys.argv[1])
columns = [las.x, las.y, las.z, las.intensity, las.classification, las.return_number, las.number_of_returns]
np.stack([np.asarray(c, dtype=np.float64) for c in columns], axis=1).astype('<f8').tofile(sys.argv[2])
)";

constexpr int kColumns = 7;

} // namespace

TEST(LasCrossCheck, SampleFilesDecodeAsLaspyDecodesThem)
{
    std::string why;
    const std::string python = vxtest::laspyPython(why);
    if (python.empty())
        GTEST_SKIP() << why;
    const std::string script = lastest::tempPath("dump.py");
    {
        std::vector<uint8_t> text(kDumpScript, kDumpScript + std::strlen(kDumpScript));
        lastest::writeBytes(script, text);
    }
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(VEXARO_DATA_DIR)) {
        if (entry.path().extension() != ".las")
            continue;
        const std::string path = entry.path().string();
        SCOPED_TRACE(path);
        const std::string dump = lastest::tempPath("dump.bin");
        const std::string command = "'" + python + "' '" + script + "' '" + path + "' '" + dump + "'";
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
        const auto raw = lastest::fileBytes(dump);
        std::remove(dump.c_str());

        const LasFile f = LasFile::read(path);
        ASSERT_EQ(raw.size(), f.size() * kColumns * sizeof(double));
        std::vector<double> ref(f.size() * kColumns);
        std::memcpy(ref.data(), raw.data(), raw.size());
        for (std::size_t i = 0; i < f.size(); ++i) {
            const double* r = &ref[i * kColumns];
            ASSERT_DOUBLE_EQ(f.x(i), r[0]) << "point " << i;
            ASSERT_DOUBLE_EQ(f.y(i), r[1]) << "point " << i;
            ASSERT_DOUBLE_EQ(f.z(i), r[2]) << "point " << i;
            ASSERT_EQ(f.intensity(i), r[3]) << "point " << i;
            ASSERT_EQ(f.classification(i), r[4]) << "point " << i;
            ASSERT_EQ(f.returnNumber(i), r[5]) << "point " << i;
            ASSERT_EQ(f.numberOfReturns(i), r[6]) << "point " << i;
        }
        ++files;
    }
    std::remove(script.c_str());
    EXPECT_GT(files, 0);
}
