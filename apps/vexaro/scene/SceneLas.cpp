// The scene as two LAS files: what a classifier is given, and the truth.
#include "las/LasFile.h"
#include "scene/Scene.h"

#include <cmath>

namespace vx::scene {

void writeSceneLas(const Scene& scene, const std::string& inputPath, const std::string& truthPath)
{
    const double scale[3] = {0.01, 0.01, 0.01};
    const double offset[3] = {std::floor(scene.originX), std::floor(scene.originY), 0.0};
    auto file = vx::las::LasFile::create(4, 6, scale, offset);
    // The coordinate system as OGC WKT, NUL-terminated; create() sets the WKT bit of the global
    // encoding for LAS 1.4 point format 6.
    const std::string wkt = sceneWkt(scene.units);
    std::vector<uint8_t> payload(wkt.begin(), wkt.end());
    payload.push_back(0);
    file.addVlr("LASF_Projection", 2112, "OGC coordinate system WKT", payload);
    file.reserve(scene.points.size());
    for (const auto& p : scene.points) {
        vx::las::NewPoint n;
        n.x = scene.originX + p.x;
        n.y = scene.originY + p.y;
        n.z = p.z;
        n.intensity = p.intensity;
        n.returnNumber = p.returnNumber;
        n.numberOfReturns = p.numberOfReturns;
        n.classification = 1;
        n.gpsTime = p.gpsTime;
        file.addPoint(n);
    }
    if (!inputPath.empty())
        file.write(inputPath);
    if (truthPath.empty())
        return;
    for (std::size_t i = 0; i < scene.points.size(); ++i)
        file.setClassification(i, scene.points[i].truth);
    file.write(truthPath);
}

} // namespace vx::scene
