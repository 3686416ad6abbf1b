#include "DataProfile.h"

#include "CellHash.h"
#include "Format.h"
#include "GroundNoise.h"
#include "TerrainSteepness.h"
#include "las/LasFile.h"

#include <algorithm>
#include <cmath>

namespace vx::app {

namespace {

/// Cells of the density grid are this many spacings wide: about nine points a cell, so that
/// hardly any cell inside the data is empty by chance.
constexpr double kCellSpacings = 3;
/// A point with no neighbour within this many spacings counts as isolated.
constexpr double kIsolationSpacings = 10;
/// Points beyond the 1st..99th percentile heights by more than that range, and at least this
/// many metres, count as far outside the height range.
constexpr double kHeightMarginMetres = 20;
/// Height above a cell's lowest last return within which the noise of hard surfaces is read.
constexpr double kNoiseBandMetres = 0.5;
/// The least last-return density (points per m²) the classification rules are made for.
constexpr double kLeastLastDensity = 0.1;
/// A share of suspect points above this makes a warning.
constexpr double kNoisyShare = 0.01;

/// The q-quantile (0..1) of the values, by selection; `v` is reordered.
double quantile(std::vector<double>& v, double q)
{
    const std::size_t k = std::min(v.size() - 1, static_cast<std::size_t>(q * (v.size() - 1) + 0.5));
    std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(k), v.end());
    return v[k];
}

/// Index of a coordinate in cells of `cell` from `origin`, clamped to [0, 2^32 - 2].
uint64_t cellIndex(double v, double origin, double cell)
{
    const double f = std::floor((v - origin) / cell);
    if (!(f >= 0))
        return 0;
    return f > 4294967294.0 ? 4294967294ull : static_cast<uint64_t>(f);
}

struct Grid {
    double density = 0; ///< per unit², points over the occupied area
    double area = 0;    ///< occupied area, unit²
    double cell = 0;
};

/// Counts points per cell. The occupied area is that of the occupied cells, a cell on the edge of
/// the data or of a hole in it (one of its four neighbours empty) counted half: the edge crosses
/// such a cell somewhere, on average through its middle. So neither edges nor cell size bias the
/// density much, and a stray point adds half a cell.
Grid measure(const std::vector<double>& xs, const std::vector<double>& ys, double x0, double y0, double cell)
{
    CellHash cells(
        static_cast<std::size_t>(xs.size() / (kCellSpacings * kCellSpacings))); // cells of the data
    for (std::size_t i = 0; i < xs.size(); ++i)
        cells.add(cellIndex(xs[i], x0, cell) << 32 | cellIndex(ys[i], y0, cell));
    std::size_t inner = 0, edge = 0;
    cells.forEach([&](uint64_t key, uint32_t) {
        const uint64_t ix = key >> 32, iy = key & 0xFFFFFFFFull;
        const bool surrounded = ix > 0 && iy > 0 && ix < 4294967294ull && iy < 4294967294ull &&
                                cells.count((ix - 1) << 32 | iy) && cells.count((ix + 1) << 32 | iy) &&
                                cells.count(ix << 32 | (iy - 1)) && cells.count(ix << 32 | (iy + 1));
        ++(surrounded ? inner : edge);
    });
    Grid g;
    g.cell = cell;
    g.area = (inner + 0.5 * edge) * cell * cell;
    g.density = xs.size() / g.area;
    return g;
}

/// Cell sizes come in steps of 2^(1/4), so that a slightly different first guess (a stray point,
/// one point more or less) ends on the same cell size and the same figures.
double stepCell(double size)
{
    return std::exp2(std::round(4 * std::log2(size)) / 4);
}

/// Refines the spacing from a first guess: cells follow the spacing, the spacing the density,
/// until the cell size repeats.
Grid estimateDensity(const std::vector<double>& xs, const std::vector<double>& ys, double x0, double y0,
                     double spacingGuess, double leastCell)
{
    double cell = std::max(stepCell(kCellSpacings * spacingGuess), leastCell);
    Grid g;
    for (int pass = 0; pass < 8; ++pass) {
        g = measure(xs, ys, x0, y0, cell);
        const double next = std::max(stepCell(kCellSpacings / std::sqrt(g.density)), leastCell);
        if (next == cell)
            break;
        cell = next;
    }
    return g;
}

/// The 0.5th to 99.5th percentile of x and y: an extent that stray points cannot stretch.
struct RobustBox {
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;

    RobustBox(const std::vector<double>& xs, const std::vector<double>& ys)
    {
        std::vector<double> v = xs;
        x1 = quantile(v, 0.005), x2 = quantile(v, 0.995);
        v = ys;
        y1 = quantile(v, 0.005), y2 = quantile(v, 0.995);
    }

    /// A first spacing for `n` points, 0 when the box has no extent.
    double spacing(std::size_t n) const
    {
        const double w = x2 - x1, h = y2 - y1;
        if (w > 0 && h > 0)
            return std::sqrt(w * h / n);
        return std::max(w, h) / n;
    }
};

/// Points with no neighbour within `radius` (3D, z in horizontal units): a 3D cell hash of that
/// cell size, a point alone in its cell and the 26 around it is isolated. Points more than 2^20
/// cells from the centre are isolated too. Marks them in `suspect`.
void markIsolated(const std::vector<double>& xs, const std::vector<double>& ys, const std::vector<double>& zs,
                  double zToHorizontal, double cx, double cy, double cz, double radius,
                  std::vector<char>& suspect)
{
    constexpr int64_t kHalf = 1 << 20, kSpan = 2 * kHalf;
    const std::size_t n = xs.size();
    std::vector<uint64_t> keys(n);
    auto index = [&](double v, double c) {
        return static_cast<int64_t>(std::floor((v - c) / radius)) + kHalf;
    };
    auto pack = [](int64_t i, int64_t j, int64_t k) {
        return static_cast<uint64_t>(i) << 42 | static_cast<uint64_t>(j) << 21 | static_cast<uint64_t>(k);
    };
    constexpr uint64_t kOutside = ~uint64_t(0);
    CellHash cells(n / 64); // cells ten spacings wide hold tens of points
    for (std::size_t i = 0; i < n; ++i) {
        const int64_t ix = index(xs[i], cx), iy = index(ys[i], cy), iz = index(zs[i] * zToHorizontal, cz);
        if (ix < 1 || iy < 1 || iz < 1 || ix >= kSpan - 1 || iy >= kSpan - 1 || iz >= kSpan - 1) {
            keys[i] = kOutside;
            suspect[i] = 1;
            continue;
        }
        keys[i] = pack(ix, iy, iz);
        cells.add(keys[i]);
    }
    for (std::size_t i = 0; i < n; ++i) {
        if (keys[i] == kOutside || cells.count(keys[i]) > 1)
            continue;
        const int64_t ix = keys[i] >> 42, iy = (keys[i] >> 21) & (kSpan - 1), iz = keys[i] & (kSpan - 1);
        bool alone = true;
        for (int dx = -1; dx <= 1 && alone; ++dx)
            for (int dy = -1; dy <= 1 && alone; ++dy)
                for (int dz = -1; dz <= 1 && alone; ++dz)
                    if ((dx || dy || dz) && cells.count(pack(ix + dx, iy + dy, iz + dz)) > 0)
                        alone = false;
        if (alone)
            suspect[i] = 1;
    }
}

/// Signs that coordinates of unknown unit are feet, or "" when there are none. Read as metres,
/// feet data shows a density per unit² a tenth (0.093) of its true one per m² and heights 3.28
/// times their true values. Two signs are used, each implausible for an airborne survey in metres
/// yet ordinary in feet:
///   - heights above 9,000 units: no land surface reaches 9,000 m, while 9,000 ft is common
///     mountain terrain;
///   - fewer than 1 point per unit² (spacing above 1 unit) with a robust height range above
///     100 units: sparse metric data (legacy or decimated surveys) with 100 m of relief inside
///     one tile is rare, while a 1-4 pts/m² survey in feet reads 0.1-0.4 pts/unit² and 30 m of
///     relief reads 100 units.
/// Dense feet data over flat ground shows neither sign; the plain unknown-units warning covers it.
std::string feetSigns(const DataProfile& p)
{
    if (p.heightP99 > 9000)
        return "heights reach " + fixed(p.heightP99, 0) + " units, above any land surface in metres";
    if (p.density > 0 && p.density < 1 && p.heightP99 - p.heightP01 > 100)
        return "a spacing of " + fixed(p.spacing, 2) + " units with " + fixed(p.heightP99 - p.heightP01, 0) +
               " units of relief is unusual for metres";
    return "";
}

void addWarnings(DataProfile& p, double suspectShare)
{
    if (p.points == 0) {
        p.warnings.push_back("the file holds no points: nothing to profile or classify");
        return;
    }
    if (p.geographic)
        p.warnings.push_back("the coordinates are geographic (degrees, from the " + p.unitSource +
                             "): no length, area or density can be derived from them; reproject the "
                             "file to a projected coordinate system in metres or feet");
    else if (p.horizontalUnit == LengthUnit::Unknown) {
        const std::string signs = feetSigns(p);
        if (!signs.empty())
            p.warnings.push_back("the file names no length unit and its coordinates look like feet (" +
                                 signs +
                                 "); lengths are read as metres: give --units feet or --units us-feet if "
                                 "they are feet, --units metres if they are not");
        else if (p.unitSource != "none")
            p.warnings.push_back("the file's coordinate system (" + p.unitSource +
                                 ") has a length unit other than metre or foot; lengths are read as metres "
                                 "(give --units metres, feet or us-feet to say which)");
        else
            p.warnings.push_back("the file names no length unit; lengths are read as metres (give --units "
                                 "metres, feet or us-feet to say which)");
    }
    if (p.density == 0 || p.lastDensity == 0)
        p.warnings.push_back("too few points (" + std::to_string(p.points) + ", " +
                             std::to_string(p.lastReturns) +
                             " last returns) spread over too little area to " + "measure a density");
    else if (!p.geographic && p.lastDensity < kLeastLastDensity)
        p.warnings.push_back("last-return density " + fixed(p.lastDensity, 3) + " pts/" +
                             (p.horizontalUnit == LengthUnit::Unknown ? "unit²" : "m²") + " is below " +
                             fixed(kLeastLastDensity, 1) +
                             " pts/m², the least the classification rules handle");
    if (suspectShare > kNoisyShare)
        p.warnings.push_back(grouped(static_cast<long long>(p.isolatedPoints)) + " points (" +
                             percent(suspectShare) +
                             ") lie far from every neighbour or far outside the height range: the file "
                             "looks noisy; remove noise (e.g. classify it 7) before classifying");
}

} // namespace

DataProfile profileLas(const vx::las::LasFile& file, LengthUnit unitsOverride)
{
    DataProfile p;
    CoordinateUnits units = unitsOfFile(file);
    if (unitsOverride != LengthUnit::Unknown)
        units = {unitsOverride, unitsOverride, false, "--units"};
    p.horizontalUnit = units.horizontal;
    p.verticalUnit = units.vertical;
    p.unitSource = units.source;
    p.geographic = units.geographic;
    p.metresPerUnit = metresPer(p.horizontalUnit);

    const std::size_t n = file.size();
    p.points = n;
    if (n == 0) {
        addWarnings(p, 0);
        return p;
    }
    std::size_t lastReturns = 0;
    for (std::size_t i = 0; i < n; ++i) {
        lastReturns += file.returnNumber(i) == file.numberOfReturns(i);
        p.intensities = p.intensities || file.intensity(i) != file.intensity(0);
    }
    std::vector<double> xs(n), ys(n), zs(n), lx, ly;
    lx.reserve(lastReturns);
    ly.reserve(lastReturns);
    for (std::size_t i = 0; i < n; ++i) {
        xs[i] = file.x(i);
        ys[i] = file.y(i);
        zs[i] = file.z(i);
        if (file.returnNumber(i) == file.numberOfReturns(i)) {
            lx.push_back(xs[i]);
            ly.push_back(ys[i]);
        }
    }
    p.lastReturns = lx.size();
    p.returnsPerPulse = p.lastReturns ? static_cast<double>(n) / p.lastReturns : 0;
    const auto [x1, x2] = std::minmax_element(xs.begin(), xs.end());
    const auto [y1, y2] = std::minmax_element(ys.begin(), ys.end());
    const auto [z1, z2] = std::minmax_element(zs.begin(), zs.end());
    p.minX = *x1, p.maxX = *x2, p.minY = *y1, p.maxY = *y2, p.minZ = *z1, p.maxZ = *z2;
    {
        std::vector<double> v = zs;
        p.heightP01 = quantile(v, 0.01);
        p.heightP99 = quantile(v, 0.99);
    }

    const auto& h = file.header();
    const double leastCell = 4 * std::max(std::fabs(h.scale[0]), std::fabs(h.scale[1]));
    const double perSquareMetre = 1 / (p.metresPerUnit * p.metresPerUnit);
    double spacingUnits = 0;
    const RobustBox box(xs, ys);
    if (n >= 2) {
        const double guess = box.spacing(n);
        if (guess > 0) {
            const Grid all = estimateDensity(xs, ys, p.minX, p.minY, guess, leastCell);
            p.occupiedArea = all.area;
            spacingUnits = 1 / std::sqrt(all.density);
            p.density = all.density * perSquareMetre;
            p.spacing = 1 / std::sqrt(p.density);
        }
    }
    if (lx.size() == n) {
        p.lastDensity = p.density;
        p.lastSpacing = p.spacing;
    } else if (lx.size() >= 2 && spacingUnits > 0) {
        // Last returns thin the cloud evenly: the first guess follows from the all-points spacing.
        const double guess = spacingUnits * std::sqrt(static_cast<double>(n) / lx.size());
        const Grid last = estimateDensity(lx, ly, p.minX, p.minY, guess, leastCell);
        p.lastDensity = last.density * perSquareMetre;
        p.lastSpacing = 1 / std::sqrt(p.lastDensity);
    }

    // Noise suspicion: far outside the robust height range, or isolated.
    std::vector<char> suspect(n, 0);
    const bool verticalKnown = p.verticalUnit != LengthUnit::Unknown;
    const double margin = std::max(p.heightP99 - p.heightP01,
                                   kHeightMarginMetres / (verticalKnown ? metresPer(p.verticalUnit) : 1.0));
    for (std::size_t i = 0; i < n; ++i)
        if (zs[i] < p.heightP01 - margin || zs[i] > p.heightP99 + margin)
            suspect[i] = 1;
    // Degrees and metres share no scale for a 3D neighbourhood: geographic files get the height test only.
    if (spacingUnits > 0 && !p.geographic) {
        const double zToHorizontal = verticalKnown && p.horizontalUnit != LengthUnit::Unknown
                                         ? metresPer(p.verticalUnit) / p.metresPerUnit
                                         : 1.0;
        markIsolated(xs, ys, zs, zToHorizontal, 0.5 * (box.x1 + box.x2), 0.5 * (box.y1 + box.y2),
                     0.5 * (p.heightP01 + p.heightP99) * zToHorizontal, kIsolationSpacings * spacingUnits,
                     suspect);
    }
    p.isolatedPoints = static_cast<std::size_t>(std::count(suspect.begin(), suspect.end(), 1));

    // The terrain's steepness over cells of four last-return spacings, at least 5 m, which hold a
    // ground return almost everywhere; the ground noise over cells of three, at least 1 m, which
    // hold a handful of last returns, read in the lowest 0.5 m of each.
    const double metresPerVertical = verticalKnown ? metresPer(p.verticalUnit) : p.metresPerUnit;
    const double last = p.lastSpacing > 0 ? p.lastSpacing : 1.0;
    p.terrainSlope = terrainSteepness(file, std::max(5.0, 4.0 * last) / p.metresPerUnit) * metresPerVertical /
                     p.metresPerUnit;
    p.groundNoise =
        groundNoise(file, std::max(1.0, 3.0 * last) / p.metresPerUnit, kNoiseBandMetres / metresPerVertical) *
        metresPerVertical;
    p.unitsLookLikeFeet = !p.geographic && p.horizontalUnit == LengthUnit::Unknown && !feetSigns(p).empty();
    addWarnings(p, static_cast<double>(p.isolatedPoints) / n);
    return p;
}

} // namespace vx::app
