#include "Args.h"
#include "Commands.h"
#include "Console.h"
#include "DataProfile.h"
#include "FileChecks.h"
#include "Format.h"
#include "ParameterTable.h"
#include "las/LasFile.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <sstream>

namespace vx::app {

namespace {

/// Up to 15 significant digits, no trailing zeros.
std::string number(double v)
{
    std::ostringstream s;
    s.precision(15);
    if (v == 0)
        v = 0; // no "-0"
    s << v;
    return s.str();
}

/// A coordinate with as many decimals as the scale factor resolves.
std::string coordinate(double v, double scale)
{
    const int decimals =
        scale > 0 ? std::clamp(static_cast<int>(std::ceil(-std::log10(scale) - 1e-9)), 0, 9) : 6;
    return fixed(v, decimals);
}

} // namespace

int infoCommand(const Arguments& arguments)
{
    ArgList args(arguments, "info");
    std::string path;
    LengthUnit units = LengthUnit::Unknown;
    while (!args.done()) {
        const std::string t = args.next();
        if (t == "-h" || t == "--help") {
            std::cout << helpText("info");
            return 0;
        }
        if (t == "--units")
            units = parseUnits(args.value(t));
        else if (isOption(t))
            args.unknownOption(t);
        else if (path.empty())
            path = t;
        else
            args.unexpected(t);
    }
    if (path.empty())
        throw UsageError("info needs a LAS file (see 'vexaro info --help')");
    requireReadableFile(path, "input");
    const auto file = vx::las::LasFile::read(path);
    const auto& h = file.header();

    std::cout << "File            " << path << '\n';
    std::cout << "LAS version     " << int(h.versionMajor) << '.' << int(h.versionMinor) << '\n';
    std::cout << "Point format    " << int(h.pointFormat) << " (" << h.recordLength << "-byte records)\n";
    std::cout << "Points          " << grouped(static_cast<long long>(h.pointCount)) << '\n';
    std::cout << "Header          " << h.headerSize << " bytes, points from byte " << h.offsetToPointData
              << ", " << h.vlrCount << " VLRs, " << h.evlrCount << " EVLRs\n";
    std::cout << "Created         day " << h.creationDay << " of " << h.creationYear << ", system \""
              << h.systemId << "\", software \"" << h.software << "\"\n";
    std::cout << "Scale           " << number(h.scale[0]) << ' ' << number(h.scale[1]) << ' '
              << number(h.scale[2]) << '\n';
    std::cout << "Offset          " << number(h.offset[0]) << ' ' << number(h.offset[1]) << ' '
              << number(h.offset[2]) << '\n';
    const char* axis[3] = {"x", "y", "z"};
    for (int a = 0; a < 3; ++a)
        std::cout << "Bounds " << axis[a] << "        " << coordinate(h.minBound[a], h.scale[a]) << " to "
                  << coordinate(h.maxBound[a], h.scale[a]) << '\n';

    std::vector<int> classes(file.size());
    for (std::size_t i = 0; i < file.size(); ++i)
        classes[i] = file.classification(i);
    std::cout << "\nClasses\n" << classSummary(classes, h.pointFormat <= 5);

    const DataProfile profile = profileLas(file, units);
    std::cout << '\n' << formatProfile(profile);
    std::cout.flush();
    for (const std::string& w : profile.warnings)
        std::cerr << "vexaro: warning: " << w << '\n';
    return 0;
}

} // namespace vx::app
