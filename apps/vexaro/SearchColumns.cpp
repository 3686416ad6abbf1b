#include "SearchColumns.h"

#include "Format.h"
#include "ParameterTable.h"

#include <algorithm>

namespace vx::app {

namespace {
/// Neighbours read by one point, and by the whole run, beyond which a search is refused: a run
/// reads about a hundred million a second on two cores, so the limit is some twenty minutes of
/// reading for one search.
constexpr double kMostColumnPoints = 1e5;
constexpr double kMostVisits = 1e11;
} // namespace

void checkSearchColumns(double column, const std::string& what, const DataScale& scale)
{
    if (!(scale.density > 0) || scale.points == 0)
        return;
    const double side = 3.0 * column * scale.metresPerUnit;
    const double points = static_cast<double>(scale.points);
    const double block = std::min(points, scale.density * side * side);
    if (block > kMostColumnPoints && block * points > kMostVisits)
        throw UsageError(what + " " + fixed(column, 1) + " makes each of the " +
                         grouped(static_cast<long long>(points)) + " points read about " +
                         grouped(static_cast<long long>(block)) +
                         " others, a search of hours on this cloud; set a smaller range");
}

} // namespace vx::app
