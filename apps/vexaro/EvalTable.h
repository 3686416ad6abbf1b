// The one-row-per-file accuracy table of `vexaro eval`: a row per reference file, a mean row,
// as aligned text or as CSV.
#pragma once

#include "Evaluation.h"

#include <string>
#include <vector>

namespace vx::app {

struct EvalRow {
    enum Status { kCompared, kMissing, kFailed };

    std::string file; ///< the name shown in the first column
    Status status = kCompared;
    std::string error;     ///< why the file could not be compared (kFailed)
    Evaluation evaluation; ///< kCompared only
    double seconds = -1;   ///< the classification's time from NAME.seconds; negative when unknown
};

/// The figures of one row, as fractions (NaN where undefined) and seconds (NaN when unknown).
struct RowFigures {
    double points = 0;
    double typeI = 0, typeII = 0, totalError = 0, kappa = 0;
    double buildingF1 = 0, vegetationF1 = 0, tierAccuracy = 0;
    double seconds = 0;
};

RowFigures figuresOf(const EvalRow& row);

/// The mean row over the compared rows: each figure is the mean of the rows where it is defined
/// (n/a where none is); points is the total of the compared rows.
RowFigures meanFigures(const std::vector<EvalRow>& rows);

/// Aligned text: a header, one line per row, a "mean" line and a line counting the files.
std::string formatEvalTable(const std::vector<EvalRow>& rows);

/// CSV (comma-separated, a header line, figures in percent with two decimals, kappa with four,
/// empty fields where a figure is undefined, a status column "ok", "missing" or "error: ...").
/// `withMean` adds the "mean" row.
std::string formatEvalCsv(const std::vector<EvalRow>& rows, bool withMean);

/// The seconds of a NAME.seconds file (one number); negative when the file does not exist.
/// Throws std::runtime_error when it exists but does not hold one non-negative number.
double readSeconds(const std::string& path);

} // namespace vx::app
