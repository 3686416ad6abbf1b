// The coordinate system the scenes are written in: UTM zone 33N on WGS 84, whose false easting
// puts the scene's origin (500 km east, 5000 km north) 0.5 degrees east of the central meridian
// at about 45 degrees north. In feet the projection is the same, its linear unit and false
// easting in feet, and heights in feet above the EGM96 geoid.
#include "scene/Scene.h"

namespace vx::scene {

namespace {

const char* const kGeographic =
    "GEOGCS[\"WGS 84\",DATUM[\"WGS_1984\",SPHEROID[\"WGS 84\",6378137,298.257223563,"
    "AUTHORITY[\"EPSG\",\"7030\"]],AUTHORITY[\"EPSG\",\"6326\"]],"
    "PRIMEM[\"Greenwich\",0,AUTHORITY[\"EPSG\",\"8901\"]],"
    "UNIT[\"degree\",0.0174532925199433,AUTHORITY[\"EPSG\",\"9122\"]],AUTHORITY[\"EPSG\",\"4326\"]]";

std::string projection(const std::string& falseEasting)
{
    return std::string("PROJECTION[\"Transverse_Mercator\"],PARAMETER[\"latitude_of_origin\",0],"
                       "PARAMETER[\"central_meridian\",15],PARAMETER[\"scale_factor\",0.9996],"
                       "PARAMETER[\"false_easting\",") +
           falseEasting + "],PARAMETER[\"false_northing\",0],";
}

const char* const kAxes = "AXIS[\"Easting\",EAST],AXIS[\"Northing\",NORTH]";

} // namespace

std::string sceneWkt(SceneUnits units)
{
    if (units == SceneUnits::Metres)
        return std::string("PROJCS[\"WGS 84 / UTM zone 33N\",") + kGeographic + "," + projection("500000") +
               "UNIT[\"metre\",1,AUTHORITY[\"EPSG\",\"9001\"]]," + kAxes + ",AUTHORITY[\"EPSG\",\"32633\"]]";
    const bool us = units == SceneUnits::UsSurveyFeet;
    // 500 000 m in the unit: 500000 / 0.3048 and 500000 * 3937 / 1200.
    const std::string unit = us ? "UNIT[\"US survey foot\",0.3048006096012192,AUTHORITY[\"EPSG\",\"9003\"]]"
                                : "UNIT[\"foot\",0.3048,AUTHORITY[\"EPSG\",\"9002\"]]";
    const std::string name = us ? "WGS 84 / UTM zone 33N (ftUS)" : "WGS 84 / UTM zone 33N (ft)";
    const std::string horizontal = "PROJCS[\"" + name + "\"," + kGeographic + "," +
                                   projection(us ? "1640416.666666667" : "1640419.947506562") + unit + "," +
                                   kAxes + "]";
    const std::string vertical = std::string("VERT_CS[\"EGM96 height (") + (us ? "ftUS" : "ft") +
                                 ")\",VERT_DATUM[\"EGM96 geoid\",2005,AUTHORITY[\"EPSG\",\"5171\"]]," + unit +
                                 ",AXIS[\"Gravity-related height\",UP]]";
    return "COMPD_CS[\"" + name + " + EGM96 height (" + (us ? "ftUS" : "ft") + ")\"," + horizontal + "," +
           vertical + "]";
}

} // namespace vx::scene
