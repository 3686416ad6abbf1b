#include "Evaluation.h"

#include <cmath>
#include <cstdio>
#include <limits>
#include <sstream>

namespace vx::app {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double ratio(double a, double b)
{
    return b > 0 ? a / b : kNaN;
}

std::string padLeft(const std::string& s, std::size_t width)
{
    return s.size() >= width ? s : std::string(width - s.size(), ' ') + s;
}

std::string padRight(const std::string& s, std::size_t width)
{
    return s.size() >= width ? s : s + std::string(width - s.size(), ' ');
}

} // namespace

Category categoryOf(int cls)
{
    switch (cls) {
    case 2:
        return kGroundCategory;
    case 6:
        return kBuildingCategory;
    case 3:
    case 4:
    case 5:
        return kVegetationCategory;
    default:
        return kOtherCategory;
    }
}

const char* categoryName(int category)
{
    static const char* names[kCategories] = {"ground", "building", "vegetation", "other"};
    return category >= 0 && category < kCategories ? names[category] : "?";
}

double Evaluation::precision(int k) const
{
    double column = 0;
    for (int r = 0; r < kCategories; ++r)
        column += static_cast<double>(matrix[r][k]);
    return ratio(static_cast<double>(matrix[k][k]), column);
}

double Evaluation::recall(int k) const
{
    double row = 0;
    for (int c = 0; c < kCategories; ++c)
        row += static_cast<double>(matrix[k][c]);
    return ratio(static_cast<double>(matrix[k][k]), row);
}

double Evaluation::f1(int k) const
{
    double row = 0, column = 0;
    for (int c = 0; c < kCategories; ++c) {
        row += static_cast<double>(matrix[k][c]);
        column += static_cast<double>(matrix[c][k]);
    }
    const double hits = static_cast<double>(matrix[k][k]);
    // 2 TP + FP + FN = row + column; row > 0 keeps it positive.
    return row > 0 ? 2 * hits / (row + column) : kNaN;
}

double Evaluation::overallAccuracy() const
{
    double diagonal = 0;
    for (int k = 0; k < kCategories; ++k)
        diagonal += static_cast<double>(matrix[k][k]);
    return ratio(diagonal, static_cast<double>(points));
}

Evaluation evaluate(const std::vector<int>& reference, const std::vector<int>& classified)
{
    Evaluation e;
    const std::size_t n = reference.size() < classified.size() ? reference.size() : classified.size();
    for (std::size_t i = 0; i < n; ++i) {
        if (!scoredReference(reference[i])) {
            ++e.unscored;
            continue;
        }
        const Category r = categoryOf(reference[i]), c = categoryOf(classified[i]);
        ++e.matrix[r][c];
        if (r == kVegetationCategory) {
            ++e.vegetationPoints;
            if (classified[i] == reference[i])
                ++e.tierKept;
        }
        const bool refGround = r == kGroundCategory, outGround = c == kGroundCategory;
        if (refGround)
            ++(outGround ? e.groundKept : e.groundRejected);
        else
            ++(outGround ? e.otherAccepted : e.otherKept);
    }
    const double a = static_cast<double>(e.groundKept), b = static_cast<double>(e.groundRejected);
    const double c = static_cast<double>(e.otherAccepted), d = static_cast<double>(e.otherKept);
    e.points = n - e.unscored;
    const double total = static_cast<double>(e.points);
    e.typeI = ratio(b, a + b);
    e.typeII = ratio(c, c + d);
    e.totalError = ratio(b + c, total);
    // Cohen's kappa of the two-class table: observed agreement against chance agreement.
    const double observed = ratio(a + d, total);
    const double chance = total > 0 ? ((a + b) * (a + c) + (c + d) * (b + d)) / (total * total) : kNaN;
    e.kappa = chance < 1.0 ? (observed - chance) / (1.0 - chance) : kNaN;
    e.tierAccuracy = ratio(static_cast<double>(e.tierKept), static_cast<double>(e.vegetationPoints));
    return e;
}

std::string formatEvaluation(const Evaluation& e)
{
    std::ostringstream out;
    auto count = [](std::size_t v) { return grouped(static_cast<long long>(v)); };
    char kappa[32];
    if (std::isnan(e.kappa))
        std::snprintf(kappa, sizeof kappa, "n/a");
    else
        std::snprintf(kappa, sizeof kappa, "%.4f", e.kappa);

    out << "Points compared: " << count(e.points);
    if (e.unscored > 0)
        out << "   (" << count(e.unscored) << " more of reference class 0, never classified, left out)";
    out << "\n\n";
    out << "Ground against non-ground (reference class 2)\n";
    out << "  type I error (ground rejected)        " << padLeft(percent(e.typeI), 9) << "   ("
        << count(e.groundRejected) << " of " << count(e.groundKept + e.groundRejected) << " ground points)\n";
    out << "  type II error (non-ground accepted)   " << padLeft(percent(e.typeII), 9) << "   ("
        << count(e.otherAccepted) << " of " << count(e.otherAccepted + e.otherKept)
        << " non-ground points)\n";
    out << "  total error                           " << padLeft(percent(e.totalError), 9) << '\n';
    out << "  kappa                                 " << padLeft(kappa, 9) << "\n\n";

    out << "Vegetation tiers (reference classes 3, 4, 5)\n";
    out << "  tier accuracy (the very same class)   " << padLeft(percent(e.tierAccuracy), 9) << "   ("
        << count(e.tierKept) << " of " << count(e.vegetationPoints) << " vegetation points)\n\n";

    out << "Confusion matrix (rows: reference, columns: classified)\n";
    out << padRight("", 14);
    for (int c = 0; c < kCategories; ++c)
        out << padLeft(categoryName(c), 12);
    out << padLeft("total", 12) << '\n';
    std::size_t columns[kCategories] = {};
    for (int r = 0; r < kCategories; ++r) {
        std::size_t row = 0;
        out << "  " << padRight(categoryName(r), 12);
        for (int c = 0; c < kCategories; ++c) {
            out << padLeft(count(e.matrix[r][c]), 12);
            row += e.matrix[r][c];
            columns[c] += e.matrix[r][c];
        }
        out << padLeft(count(row), 12) << '\n';
    }
    out << "  " << padRight("total", 12);
    for (int c = 0; c < kCategories; ++c)
        out << padLeft(count(columns[c]), 12);
    out << padLeft(count(e.points), 12) << "\n\n";

    out << "  " << padRight("category", 12) << padLeft("precision", 12) << padLeft("recall", 12)
        << padLeft("F1", 12) << '\n';
    for (int k = 0; k < kCategories; ++k)
        out << "  " << padRight(categoryName(k), 12) << padLeft(percent(e.precision(k)), 12)
            << padLeft(percent(e.recall(k)), 12) << padLeft(percent(e.f1(k)), 12) << '\n';
    out << "\n  overall accuracy " << percent(e.overallAccuracy()) << '\n';
    return out.str();
}

} // namespace vx::app
