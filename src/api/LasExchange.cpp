// Reading a LAS file into the engine and writing classes and normals back beside it.
#include "api/FileNames.h"
#include "core/ClassifierCore.h"
#include "las/LasFile.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <string>

using vx::toText;

std::string vx::io::lasStem(const std::string& fileName)
{
    const auto slash = fileName.rfind('/');
    const std::size_t first = slash == std::string::npos ? 0 : slash + 1;
    const auto dot = fileName.rfind('.');
    const std::size_t last = (dot == std::string::npos || dot < first) ? fileName.size() : dot;
    return fileName.substr(first, last - first);
}

template <class T> void Vexaro<T>::loadLASFile(std::string fileName)
{
    facadeMessage(1, "Reading file:", fileName);
    las.reset();
    {
        std::ifstream probe(fileName, std::ios::binary);
        if (!probe)
            return; // a file that cannot be opened leaves everything as it was
    }
    auto file = std::make_shared<vx::las::LasFile>(vx::las::LasFile::read(fileName));
    facadeMessage(1, "Header Loaded");
    const std::size_t kept = file->size();
    for (std::size_t done = 1000000; done <= kept; done += 1000000)
        facadeMessage(2, "Loading point ... ", toText(done));
    facadeMessage(1, "Points Loaded!");
    las = file;
    baseName = vx::io::lasStem(fileName);

    // The reader refuses a header that promises more points than the file holds, so the
    // header's count and the records read agree here.
    const auto& h = file->header();
    const std::size_t count = std::min<std::size_t>(h.pointCount, kept);
    const double offX = (h.maxBound[0] - h.minBound[0]) * 0.5;
    const double offY = (h.maxBound[1] - h.minBound[1]) * 0.5;
    const double offZ = (h.maxBound[2] - h.minBound[2]) * 0.5;
    facadeMessage(3, "Converting LAS points into internal format ", toText(count));
    facadeMessage(4, "Offset X: ", toText(offX));
    facadeMessage(4, "Offset Y: ", toText(offY));
    facadeMessage(4, "Offset Z: ", toText(offZ));
    std::vector<VX_Point<T>> records(count);
    std::vector<uint8_t> returnCounts(count);
    std::vector<uint16_t> intensities(count);
    for (std::size_t i = 0; i < count; ++i) {
        auto& r = records[i];
        r.x = static_cast<T>((file->x(i) - h.minBound[0]) - offX);
        r.y = static_cast<T>((file->y(i) - h.minBound[1]) - offY);
        r.z = static_cast<T>((file->z(i) - h.minBound[2]) - offZ);
        r.nx = r.ny = r.nz = T(0);
        r.heightIndex = 0.f;
        r.classification = file->classification(i);
        r.lastReturn = file->returnNumber(i) == file->numberOfReturns(i) ? 1 : 0;
        returnCounts[i] = static_cast<uint8_t>(file->numberOfReturns(i));
        intensities[i] = file->intensity(i);
    }
    facadeMessage(3, "Syncing LAS data");
    if (core->setData(std::move(records))) {
        core->store.returnCounts = std::move(returnCounts);
        core->store.intensities = std::move(intensities);
    }
}

template <class T> void Vexaro<T>::saveLASFile(std::string fileName)
{
    writeLasFile(fileName, false);
}

template <class T> void Vexaro<T>::saveLASFile(std::string fileName, bool withHeightAboveGround)
{
    writeLasFile(fileName, withHeightAboveGround);
}

template <class T> void Vexaro<T>::writeLasFile(const std::string& fileName, bool withHeightAboveGround)
{
    vx::Messenger::write("Messages: ", facadeMessageLevel);
    int n = 0;
    const VX_Point<T>* records = core->getHostPoints(n);
    const std::size_t kept = las ? las->size() : 0;
    vx::Messenger::write("Points: ", toText(n) + " " + toText(kept));
    for (int i = 0; i < n; ++i) {
        if (static_cast<std::size_t>(i) >= kept) {
            std::cout << "Point " << i << " has no kept LAS point to carry its class (kept: " << kept << ")\n"
                      << std::flush;
            break;
        }
        try {
            las->setClassification(i, records[i].classification);
        } catch (const vexaro::LasError& e) {
            std::cout << e.what() << '\n' << std::flush;
            break;
        }
    }
    facadeMessage(1, "Writing points");
    {
        std::ofstream probe(fileName, std::ios::binary | std::ios::trunc);
        if (!probe)
            return;
    }
    if (!las) {
        const double scale[3] = {0.01, 0.01, 0.01}, offset[3] = {0, 0, 0};
        las = std::make_shared<vx::las::LasFile>(vx::las::LasFile::create(2, 0, scale, offset));
    }
    las->setCreationYear(2015);
    if (kept != static_cast<std::size_t>(n))
        facadeMessage(0, "WARNING! Number of points differs. Possible lose of data");
    if (withHeightAboveGround) {
        // One value a kept record: the heights of the held points, NaN past them or without any.
        std::vector<float> values(las->size(), std::numeric_limits<float>::quiet_NaN());
        const std::vector<float> heights = heightsAboveGround();
        if (heights.empty())
            facadeMessage(0,
                          "ERROR! No heights above ground for this cloud; the dimension is written as NaN");
        std::copy_n(heights.begin(), std::min(heights.size(), values.size()), values.begin());
        las->withExtraFloat("HeightAboveGround", "height above the ground surface", values).write(fileName);
    } else {
        las->write(fileName);
    }
    for (std::size_t done = 1000000; done <= kept; done += 1000000)
        vx::Messenger::write("Wrtiting points ...", done);
    vx::Messenger::write("Writing done!", "");
}

template <class T> bool Vexaro<T>::saveNormalVectors(std::string name)
{
    const std::string fileName = name + ".txt";
    facadeMessage(0, "SavingNormals", fileName);
    std::ofstream out(fileName, std::ios::trunc);
    int n = 0;
    const VX_Point<T>* records = core->getHostPoints(n);
    if (!out || !las)
        return true;
    const auto& h = las->header();
    // Records without a kept LAS point have no file coordinates to write: stop at the shorter.
    const std::size_t count = std::min<std::size_t>(static_cast<std::size_t>(n), las->size());
    for (std::size_t i = 0; i < count; ++i) {
        out.precision(12);
        out << las->rawX(i) * h.scale[0] << ' ' << las->rawY(i) * h.scale[1] << ' '
            << las->rawZ(i) * h.scale[2] << ' ' << las->intensity(i) << ' ' << records[i].nx << ' '
            << records[i].ny << ' ' << records[i].nz << '\n'
            << std::flush;
    }
    return true;
}

template void Vexaro<float>::loadLASFile(std::string);
template void Vexaro<double>::loadLASFile(std::string);
template void Vexaro<float>::saveLASFile(std::string);
template void Vexaro<double>::saveLASFile(std::string);
template void Vexaro<float>::saveLASFile(std::string, bool);
template void Vexaro<double>::saveLASFile(std::string, bool);
template void Vexaro<float>::writeLasFile(const std::string&, bool);
template void Vexaro<double>::writeLasFile(const std::string&, bool);
template bool Vexaro<float>::saveNormalVectors(std::string);
template bool Vexaro<double>::saveNormalVectors(std::string);
