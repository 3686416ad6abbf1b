// What every build knows about LAZ, with LASzip linked or not: the name rule and the refusal.
#include "LazCodec.h"

#include <cctype>

namespace vx::las::detail {

bool lazName(const std::string& path)
{
    if (path.size() < 4)
        return false;
    const std::string tail = path.substr(path.size() - 4);
    return tail[0] == '.' && std::tolower(static_cast<unsigned char>(tail[1])) == 'l' &&
           std::tolower(static_cast<unsigned char>(tail[2])) == 'a' &&
           std::tolower(static_cast<unsigned char>(tail[3])) == 'z';
}

void failNoLaz(const std::string& name)
{
    fail(name, "LAZ support is not built in; configure Vexaro with network access to PyPI (LASzip is "
               "fetched at configure time) or with an installed LASzip (-DVEXARO_LAZ=ON)");
}

} // namespace vx::las::detail
