#include "Args.h"
#include "Commands.h"
#include "EvalTable.h"
#include "Evaluation.h"
#include "FileChecks.h"
#include "Format.h"
#include "ParameterTable.h"
#include "las/LasFile.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <iostream>

namespace fs = std::filesystem;

namespace vx::app {

namespace {

std::vector<int> classesOf(const vx::las::LasFile& file)
{
    std::vector<int> classes(file.size());
    for (std::size_t i = 0; i < file.size(); ++i)
        classes[i] = file.classification(i);
    return classes;
}

/// Compares the classes of two files of the same points. Throws std::runtime_error when a file
/// cannot be read or the point counts differ; warns (naming `label`) when points lie elsewhere.
Evaluation compareFiles(const std::string& referencePath, const std::string& classifiedPath,
                        const std::string& label)
{
    requireReadableFile(referencePath, "input");
    requireReadableFile(classifiedPath, "input");
    const auto reference = vx::las::LasFile::read(referencePath);
    const auto classified = vx::las::LasFile::read(classifiedPath);
    if (reference.size() != classified.size())
        throw std::runtime_error("'" + referencePath + "' holds " +
                                 grouped(static_cast<long long>(reference.size())) + " points and '" +
                                 classifiedPath + "' " + grouped(static_cast<long long>(classified.size())) +
                                 "; eval compares the same points in the same order");

    // The files should hold one cloud; a point out of place means the orders differ.
    std::size_t moved = 0;
    for (std::size_t i = 0; i < reference.size(); ++i)
        if (std::fabs(reference.x(i) - classified.x(i)) > 1e-3 ||
            std::fabs(reference.y(i) - classified.y(i)) > 1e-3 ||
            std::fabs(reference.z(i) - classified.z(i)) > 1e-3)
            ++moved;
    if (moved > 0)
        std::cerr << "vexaro: warning: " << label << grouped(static_cast<long long>(moved))
                  << " points lie elsewhere in the two files; the comparison assumes the same points in the "
                     "same order"
                  << std::endl;
    return evaluate(classesOf(reference), classesOf(classified));
}

/// NAME.seconds beside NAME.las.
std::string secondsPath(const std::string& lasPath)
{
    return fs::path(lasPath).replace_extension(".seconds").string();
}

/// The seconds of a result, or -1 with a warning when its file holds no number.
double secondsOf(const std::string& lasPath)
{
    try {
        return readSeconds(secondsPath(lasPath));
    } catch (const std::exception& e) {
        std::cerr << "vexaro: warning: " << e.what() << std::endl;
        return -1;
    }
}

bool isLasName(const fs::path& p)
{
    std::string ext = p.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
    return ext == ".las";
}

/// The LAS files of a folder (following links), sorted by name.
std::vector<std::string> lasFilesOf(const std::string& folder)
{
    std::vector<std::string> names;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        std::error_code kind;
        if (isLasName(it->path()) && fs::is_regular_file(it->path(), kind))
            names.push_back(it->path().filename().string());
    }
    if (ec)
        throw std::runtime_error("cannot list folder '" + folder + "': " + ec.message());
    std::sort(names.begin(), names.end());
    return names;
}

int evalFiles(const std::string& reference, const std::string& classified, bool csv)
{
    EvalRow row;
    row.file = classified;
    row.evaluation = compareFiles(reference, classified, "");
    row.seconds = secondsOf(classified);
    if (csv) {
        std::cout << formatEvalCsv({row}, false);
        return 0;
    }
    std::cout << "Reference   " << reference << "\nClassified  " << classified << "\n\n";
    std::cout << formatEvaluation(row.evaluation);
    if (row.seconds >= 0)
        std::cout << "\n  seconds " << fixed(row.seconds, 2) << "   (" << secondsPath(classified) << ")\n";
    return 0;
}

int evalFolders(const std::string& referenceFolder, const std::string& resultFolder, bool csv)
{
    const auto names = lasFilesOf(referenceFolder);
    if (names.empty())
        throw std::runtime_error("no LAS files (*.las) in the reference folder '" + referenceFolder + "'");
    std::vector<EvalRow> rows;
    bool complete = true;
    for (const auto& name : names) {
        EvalRow row;
        row.file = name;
        const std::string reference = (fs::path(referenceFolder) / name).string();
        const std::string result = (fs::path(resultFolder) / name).string();
        std::error_code ec;
        if (!fs::exists(result, ec)) {
            row.status = EvalRow::kMissing;
        } else {
            try {
                row.evaluation = compareFiles(reference, result, name + ": ");
                row.seconds = secondsOf(result);
            } catch (const std::exception& e) {
                row.status = EvalRow::kFailed;
                row.error = e.what();
            }
        }
        complete = complete && row.status == EvalRow::kCompared;
        rows.push_back(std::move(row));
    }
    std::cout << (csv ? formatEvalCsv(rows, true) : formatEvalTable(rows));
    return complete ? 0 : 1;
}

} // namespace

int evalCommand(const Arguments& arguments)
{
    ArgList args(arguments, "eval");
    std::vector<std::string> paths;
    bool csv = false;
    while (!args.done()) {
        const std::string t = args.next();
        if (t == "-h" || t == "--help") {
            std::cout << helpText("eval");
            return 0;
        }
        if (t == "--csv")
            csv = true;
        else if (isOption(t))
            args.unknownOption(t);
        else if (paths.size() < 2)
            paths.push_back(t);
        else
            args.unexpected(t);
    }
    if (paths.size() < 2)
        throw UsageError("eval needs two LAS files (REFERENCE.las CLASSIFIED.las) or two folders "
                         "(REF_DIR RESULT_DIR)");
    std::error_code ec;
    const bool firstFolder = fs::is_directory(paths[0], ec), secondFolder = fs::is_directory(paths[1], ec);
    if (firstFolder && secondFolder)
        return evalFolders(paths[0], paths[1], csv);
    if (firstFolder && !fs::exists(paths[1], ec))
        throw std::runtime_error("cannot read result folder '" + paths[1] + "': no such folder");
    if (firstFolder || secondFolder)
        throw UsageError("eval compares two files or two folders; '" + paths[firstFolder ? 0 : 1] +
                         "' is a folder and '" + paths[firstFolder ? 1 : 0] + "' is not");
    return evalFiles(paths[0], paths[1], csv);
}

} // namespace vx::app
