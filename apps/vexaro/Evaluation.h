// Accuracy of a classification against a reference: ground filtering errors (type I, type II,
// total, Cohen's kappa), a confusion matrix over four categories with precision, recall and F1,
// and the vegetation tier accuracy.
//
// How classes are scored (ASPRS codes, as the reference files of the field use them):
//   2        ground
//   6        building
//   3, 4, 5  vegetation (low, medium, high): one category for the matrix and its F1; the tier
//            accuracy looks at the exact class
//   0        in the reference, "created, never classified": the reference says nothing about
//            these points, so they are left out of every figure (counted as `unscored`); in the
//            classified file, 0 is "other" like any code below
//   others   "other": 1 (unclassified, which references use for "processed, none of the
//            classes above", e.g. the non-ground of a ground-only file), the noise classes 7 and
//            18, water 9, bridge deck 17, producers' working codes such as 208 and 214 (building
//            candidates that are not buildings), and every remaining code
// So "ground" means reference class 2 and "non-ground" every scored point of another class.
#pragma once

#include "Format.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vx::app {

enum Category { kGroundCategory, kBuildingCategory, kVegetationCategory, kOtherCategory, kCategories };

/// Ground (2), building (6), vegetation (3, 4, 5) or other (everything else).
Category categoryOf(int cls);
/// Reference class 0: "created, never classified"; its points are not scored.
constexpr int kUnscoredReferenceClass = 0;
/// False for a reference class whose points are left out of every figure.
inline bool scoredReference(int cls)
{
    return cls != kUnscoredReferenceClass;
}
const char* categoryName(int category);

struct Evaluation {
    std::size_t points = 0;   ///< points scored
    std::size_t unscored = 0; ///< points of reference class 0, left out
    // Ground against everything else.
    std::size_t groundKept = 0;     ///< reference ground classified ground
    std::size_t groundRejected = 0; ///< reference ground classified otherwise (type I)
    std::size_t otherAccepted = 0;  ///< reference non-ground classified ground (type II)
    std::size_t otherKept = 0;      ///< reference non-ground classified otherwise
    double typeI = 0, typeII = 0, totalError = 0, kappa = 0; ///< fractions; NaN where undefined

    // Vegetation tiers: among reference vegetation points (3, 4, 5), those classified with
    // exactly the reference class.
    std::size_t vegetationPoints = 0; ///< reference points of class 3, 4 or 5
    std::size_t tierKept = 0;         ///< of those, classified with the very same class
    double tierAccuracy = 0;          ///< tierKept / vegetationPoints; NaN without vegetation

    /// matrix[reference][classified]
    std::size_t matrix[kCategories][kCategories] = {};
    double precision(int category) const;
    double recall(int category) const;
    /// 2 TP / (2 TP + FP + FN); NaN when the reference holds no point of the category (then
    /// there is nothing to find), 0 when it does and none is found.
    double f1(int category) const;
    double overallAccuracy() const;
};

/// Compares two class lists of the same length, point by point (reference first).
Evaluation evaluate(const std::vector<int>& reference, const std::vector<int>& classified);

/// The report printed by `vexaro eval`.
std::string formatEvaluation(const Evaluation& e);

} // namespace vx::app
