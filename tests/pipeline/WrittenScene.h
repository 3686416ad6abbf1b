// A generated scene written once per test binary into a folder of the build tree.
#pragma once

#include "scene/Scene.h"

#include <filesystem>
#include <string>

namespace pipelinetest {

/// Writes the scene of `options` to BUILD/folder/name.las and returns its path.
inline std::string writtenScene(const std::string& folder, const std::string& name,
                                const vx::scene::SceneOptions& options)
{
    const auto dir = std::filesystem::path(VEXARO_BINARY_DIR) / folder;
    std::filesystem::create_directories(dir);
    const std::string out = (dir / (name + ".las")).string();
    vx::scene::writeSceneLas(vx::scene::generateScene(options), out, "");
    return out;
}

} // namespace pipelinetest
