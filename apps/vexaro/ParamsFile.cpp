#include "ParamsFile.h"

#include "FileChecks.h"

#include <fstream>

namespace vx::app {

std::vector<Setting> parseParams(std::istream& in, const std::string& fileName)
{
    std::vector<Setting> settings;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        const auto hash = line.find('#');
        if (hash != std::string::npos)
            line.erase(hash);
        if (line.find_first_not_of(" \t\r") == std::string::npos)
            continue;
        settings.push_back(parseAssignment(line, fileName + ":" + std::to_string(number)));
    }
    return settings;
}

std::vector<Setting> readParamsFile(const std::string& path)
{
    requireReadableFile(path, "parameter file");
    std::ifstream in(path);
    return parseParams(in, path);
}

} // namespace vx::app
