// The preview of a LAS file as written, in the file's own coordinates.
#include "Preview.h"

#include "las/LasFile.h"

namespace vx::app {

void writeLasPreview(const std::string& lasPath, const std::string& pngPath, const std::string& title)
{
    const auto file = vx::las::LasFile::read(lasPath);
    std::vector<PreviewPoint> points;
    points.reserve(file.size());
    for (std::size_t i = 0; i < file.size(); ++i)
        points.push_back({file.x(i), file.y(i), file.z(i), file.classification(i)});
    writePreview(pngPath, points, title);
}

} // namespace vx::app
