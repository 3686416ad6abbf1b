// Names of the scene kinds and units, as the command line takes them.
#include "scene/Scene.h"

namespace vx::scene {

double unitLength(SceneUnits units)
{
    switch (units) {
    case SceneUnits::Metres:
        return 1.0;
    case SceneUnits::Feet:
        return 0.3048;
    case SceneUnits::UsSurveyFeet:
        return 1200.0 / 3937.0;
    }
    return 1.0;
}

const char* sceneKindName(SceneKind kind)
{
    switch (kind) {
    case SceneKind::Town:
        return "town";
    case SceneKind::Hall:
        return "hall";
    case SceneKind::Terraces:
        return "terraces";
    case SceneKind::Forest:
        return "forest";
    case SceneKind::MountainForest:
        return "mountain-forest";
    case SceneKind::Bridges:
        return "bridges";
    case SceneKind::River:
        return "river";
    }
    return "town";
}

const char* sceneUnitsName(SceneUnits units)
{
    switch (units) {
    case SceneUnits::Metres:
        return "metres";
    case SceneUnits::Feet:
        return "feet";
    case SceneUnits::UsSurveyFeet:
        return "us-feet";
    }
    return "metres";
}

bool parseSceneKind(const std::string& name, SceneKind& kind)
{
    for (SceneKind k : {SceneKind::Town, SceneKind::Hall, SceneKind::Terraces, SceneKind::Forest,
                        SceneKind::MountainForest, SceneKind::Bridges, SceneKind::River})
        if (name == sceneKindName(k)) {
            kind = k;
            return true;
        }
    if (name == "flat") {
        kind = SceneKind::Town;
        return true;
    }
    return false;
}

bool parseSceneUnits(const std::string& name, SceneUnits& units)
{
    for (SceneUnits u : {SceneUnits::Metres, SceneUnits::Feet, SceneUnits::UsSurveyFeet})
        if (name == sceneUnitsName(u)) {
            units = u;
            return true;
        }
    return false;
}

} // namespace vx::scene
