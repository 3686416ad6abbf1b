#include "EvalTable.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>

namespace vx::app {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Column {
    const char* title; ///< text header
    const char* csv;   ///< CSV header
};

// After the file column; the order of RowFigures.
const Column kColumns[] = {{"points", "points"},
                           {"type I %", "ground_type_I_pct"},
                           {"type II %", "ground_type_II_pct"},
                           {"total %", "ground_total_error_pct"},
                           {"kappa", "kappa"},
                           {"building F1 %", "building_f1_pct"},
                           {"vegetation F1 %", "vegetation_f1_pct"},
                           {"tier %", "tier_accuracy_pct"},
                           {"seconds", "seconds"}};
constexpr int kFigureColumns = sizeof kColumns / sizeof kColumns[0];

std::vector<double> asList(const RowFigures& f)
{
    return {f.points,     f.typeI,        f.typeII,       f.totalError, f.kappa,
            f.buildingF1, f.vegetationF1, f.tierAccuracy, f.seconds};
}

/// Column i of a figure list as text; `empty` stands for an undefined value.
std::string cell(const std::vector<double>& figures, int i, bool groupDigits, const std::string& empty)
{
    const double v = figures[static_cast<std::size_t>(i)];
    if (std::isnan(v))
        return i == kFigureColumns - 1 && empty == "n/a" ? "-" : empty;
    switch (i) {
    case 0:
        return groupDigits ? grouped(static_cast<long long>(v)) : std::to_string(static_cast<long long>(v));
    case 4:
        return fixed(v, 4);
    case kFigureColumns - 1:
        return fixed(v, 2);
    default:
        return fixed(v * 100.0, 2);
    }
}

std::string padLeft(const std::string& s, std::size_t width)
{
    return s.size() >= width ? s : std::string(width - s.size(), ' ') + s;
}

std::string padRight(const std::string& s, std::size_t width)
{
    return s.size() >= width ? s : s + std::string(width - s.size(), ' ');
}

std::string csvField(const std::string& s)
{
    if (s.find_first_of(",\"\n\r") == std::string::npos)
        return s;
    std::string q = "\"";
    for (char c : s)
        q += c == '"' ? std::string("\"\"") : std::string(1, c);
    return q + "\"";
}

std::string statusText(const EvalRow& row)
{
    switch (row.status) {
    case EvalRow::kCompared:
        return "ok";
    case EvalRow::kMissing:
        return "missing";
    default:
        return "error: " + row.error;
    }
}

} // namespace

RowFigures figuresOf(const EvalRow& row)
{
    const Evaluation& e = row.evaluation;
    RowFigures f;
    f.points = static_cast<double>(e.points);
    f.typeI = e.typeI;
    f.typeII = e.typeII;
    f.totalError = e.totalError;
    f.kappa = e.kappa;
    f.buildingF1 = e.f1(kBuildingCategory);
    f.vegetationF1 = e.f1(kVegetationCategory);
    f.tierAccuracy = e.tierAccuracy;
    f.seconds = row.seconds >= 0 ? row.seconds : kNaN;
    return f;
}

RowFigures meanFigures(const std::vector<EvalRow>& rows)
{
    double sum[kFigureColumns] = {}, count[kFigureColumns] = {};
    for (const auto& row : rows) {
        if (row.status != EvalRow::kCompared)
            continue;
        const auto figures = asList(figuresOf(row));
        for (int i = 0; i < kFigureColumns; ++i)
            if (!std::isnan(figures[static_cast<std::size_t>(i)])) {
                sum[i] += figures[static_cast<std::size_t>(i)];
                count[i] += 1;
            }
    }
    auto mean = [&](int i) { return count[i] > 0 ? sum[i] / count[i] : kNaN; };
    RowFigures m;
    m.points = sum[0];
    m.typeI = mean(1);
    m.typeII = mean(2);
    m.totalError = mean(3);
    m.kappa = mean(4);
    m.buildingF1 = mean(5);
    m.vegetationF1 = mean(6);
    m.tierAccuracy = mean(7);
    m.seconds = mean(8);
    return m;
}

std::string formatEvalTable(const std::vector<EvalRow>& rows)
{
    std::size_t nameWidth = 4;
    for (const auto& row : rows)
        nameWidth = row.file.size() > nameWidth ? row.file.size() : nameWidth;
    std::size_t widths[kFigureColumns];
    for (int i = 0; i < kFigureColumns; ++i) {
        const std::size_t title = std::string(kColumns[i].title).size();
        widths[i] = title > 8 ? title : 8;
    }
    widths[0] = 11; // 99,999,999 points and more stay aligned

    std::ostringstream out;
    auto line = [&](const std::string& name, const std::vector<double>& figures) {
        out << padRight(name, nameWidth);
        for (int i = 0; i < kFigureColumns; ++i)
            out << "  " << padLeft(cell(figures, i, true, "n/a"), widths[i]);
        out << '\n';
    };
    out << padRight("file", nameWidth);
    for (int i = 0; i < kFigureColumns; ++i)
        out << "  " << padLeft(kColumns[i].title, widths[i]);
    out << '\n';
    std::size_t compared = 0, missing = 0, failed = 0;
    for (const auto& row : rows) {
        if (row.status == EvalRow::kCompared) {
            ++compared;
            line(row.file, asList(figuresOf(row)));
        } else {
            ++(row.status == EvalRow::kMissing ? missing : failed);
            out << padRight(row.file, nameWidth) << "  "
                << (row.status == EvalRow::kMissing ? "missing: no result file" : "error: " + row.error)
                << '\n';
        }
    }
    line("mean", asList(meanFigures(rows)));
    out << '\n'
        << rows.size() << (rows.size() == 1 ? " file: " : " files: ") << compared << " compared, " << missing
        << " missing, " << failed << " failed.\n"
        << "Ground errors: type I (reference ground classified otherwise), type II (non-ground\n"
        << "classified ground), total. Tier: reference vegetation (3, 4, 5) classified with its very\n"
        << "class. Mean: over the compared files where a figure is defined (points: their total).\n";
    return out.str();
}

std::string formatEvalCsv(const std::vector<EvalRow>& rows, bool withMean)
{
    std::ostringstream out;
    out << "file";
    for (const auto& c : kColumns)
        out << ',' << c.csv;
    out << ",status\n";
    auto line = [&](const std::string& name, const std::vector<double>* figures, const std::string& status) {
        out << csvField(name);
        for (int i = 0; i < kFigureColumns; ++i)
            out << ',' << (figures ? cell(*figures, i, false, "") : std::string());
        out << ',' << csvField(status) << '\n';
    };
    for (const auto& row : rows) {
        if (row.status == EvalRow::kCompared) {
            const auto figures = asList(figuresOf(row));
            line(row.file, &figures, statusText(row));
        } else {
            line(row.file, nullptr, statusText(row));
        }
    }
    if (withMean) {
        const auto figures = asList(meanFigures(rows));
        line("mean", &figures, "");
    }
    return out.str();
}

double readSeconds(const std::string& path)
{
    std::ifstream in(path);
    if (!in)
        return -1;
    std::ostringstream text;
    text << in.rdbuf();
    const std::string s = text.str();
    const char* begin = s.c_str();
    char* end = nullptr;
    errno = 0;
    const double v = std::strtod(begin, &end);
    bool ok = end != begin && errno == 0 && std::isfinite(v) && v >= 0;
    for (const char* p = end; ok && p && *p; ++p)
        ok = *p == ' ' || *p == '\t' || *p == '\n' || *p == '\r';
    if (!ok)
        throw std::runtime_error("'" + path + "' should hold one number of seconds");
    return v;
}

} // namespace vx::app
