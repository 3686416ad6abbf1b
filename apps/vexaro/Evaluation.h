// Accuracy of a classification against a reference: ground filtering errors (type I, type II,
// total, Cohen's kappa) and a confusion matrix over four categories.
#pragma once

#include "Format.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vx::app {

enum Category { kGroundCategory, kBuildingCategory, kVegetationCategory, kOtherCategory, kCategories };

/// Ground (2), building (6), vegetation (3, 4, 5) or other (everything else).
Category categoryOf(int cls);
const char* categoryName(int category);

struct Evaluation {
    std::size_t points = 0;
    // Ground against everything else.
    std::size_t groundKept = 0;     ///< reference ground classified ground
    std::size_t groundRejected = 0; ///< reference ground classified otherwise (type I)
    std::size_t otherAccepted = 0;  ///< reference non-ground classified ground (type II)
    std::size_t otherKept = 0;      ///< reference non-ground classified otherwise
    double typeI = 0, typeII = 0, totalError = 0, kappa = 0; ///< fractions; NaN where undefined

    /// matrix[reference][classified]
    std::size_t matrix[kCategories][kCategories] = {};
    double precision(int category) const;
    double recall(int category) const;
    double f1(int category) const;
    double overallAccuracy() const;
};

/// Compares two class lists of the same length, point by point.
Evaluation evaluate(const std::vector<int>& reference, const std::vector<int>& classified);

/// The report printed by `vexaro eval`.
std::string formatEvaluation(const Evaluation& e);

} // namespace vx::app
