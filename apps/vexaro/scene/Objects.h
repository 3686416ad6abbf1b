// The things that stand on the demo scene's terrain, with the geometry a laser pulse needs.
#pragma once

#include <cmath>

namespace vx::scene {

enum class RoofShape { Flat, Gabled, Hipped };

/// A rectangular building on an oriented footprint. The ridge of a gabled or hipped roof runs
/// along the long axis u; v is the short axis.
struct Building {
    double cx = 0, cy = 0;                ///< footprint centre
    double ux = 1, uy = 0;                ///< unit vector of the long axis
    double halfLength = 5, halfWidth = 4; ///< halfLength >= halfWidth
    double baseZ = 0;                     ///< lowest terrain height under the footprint
    double eave = 3;                      ///< height of the eaves above baseZ
    double rise = 0;                      ///< ridge height above the eaves (0 for flat roofs)
    RoofShape roof = RoofShape::Flat;
    int intensity = 15000; ///< roof material brightness
    double tilt = 0;       ///< rise of the roof per metre along u (a bridge deck between its banks)
    bool bridge = false;   ///< a bridge deck: no walls, and the truth of its returns is the deck's

    void local(double x, double y, double& s, double& t) const
    {
        s = (x - cx) * ux + (y - cy) * uy;
        t = (x - cx) * -uy + (y - cy) * ux;
    }
    bool contains(double x, double y) const
    {
        double s, t;
        local(x, y, s, t);
        return std::fabs(s) <= halfLength && std::fabs(t) <= halfWidth;
    }
    /// Roof height at a point of the footprint.
    double roofZ(double x, double y) const
    {
        double s, t;
        local(x, y, s, t);
        const double top = baseZ + eave + tilt * s;
        const double across = halfWidth - std::fabs(t); // distance to the nearer long eave
        switch (roof) {
        case RoofShape::Flat:
            return top;
        case RoofShape::Gabled:
            return top + rise * across / halfWidth;
        case RoofShape::Hipped: {
            const double along = halfLength - std::fabs(s);
            const double d = across < along ? across : along;
            return top + rise * d / halfWidth;
        }
        }
        return top;
    }
    /// Radius of the circle around the footprint.
    double radius() const { return std::sqrt(halfLength * halfLength + halfWidth * halfWidth); }
};

/// A tree or shrub crown: an ellipsoid or, for conifers, a cone standing on its base.
struct Crown {
    double cx = 0, cy = 0;
    double groundZ = 0; ///< terrain height at the stem
    double top = 10;    ///< crown top above groundZ
    double base = 4;    ///< crown bottom above groundZ
    double radius = 2;
    bool conical = false;
    double density = 0.85; ///< chance that a pulse reflects where it enters the crown
    double stop = 0.3;     ///< chance that a return from the crown takes the rest of the pulse
    bool shrub = false;

    /// Vertical extent of the crown above (x, y) in absolute heights; false when outside.
    bool interval(double x, double y, double& zTop, double& zBottom, double& edge) const
    {
        const double dx = x - cx, dy = y - cy;
        const double r2 = dx * dx + dy * dy;
        if (r2 >= radius * radius)
            return false;
        const double q = r2 / (radius * radius);
        edge = q;
        if (conical) {
            zTop = groundZ + top - (top - base) * std::sqrt(q);
            zBottom = groundZ + base;
        } else {
            const double mid = (top + base) * 0.5, half = (top - base) * 0.5;
            const double k = std::sqrt(1.0 - q);
            zTop = groundZ + mid + half * k;
            zBottom = groundZ + mid - half * k;
        }
        return zTop > zBottom;
    }
};

/// A patch of grass: returns lie a little above the bare earth.
struct GrassPatch {
    double cx = 0, cy = 0, radius = 5;
    double height = 0.2; ///< tallest blades above the earth
    bool contains(double x, double y) const
    {
        const double dx = x - cx, dy = y - cy;
        return dx * dx + dy * dy < radius * radius;
    }
};

} // namespace vx::scene
