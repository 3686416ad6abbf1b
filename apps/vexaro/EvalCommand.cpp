#include "Args.h"
#include "Commands.h"
#include "Evaluation.h"
#include "FileChecks.h"
#include "Format.h"
#include "ParameterTable.h"
#include "las/LasFile.h"

#include <cmath>
#include <iostream>

namespace vx::app {

namespace {

std::vector<int> classesOf(const vx::las::LasFile& file)
{
    std::vector<int> classes(file.size());
    for (std::size_t i = 0; i < file.size(); ++i)
        classes[i] = file.classification(i);
    return classes;
}

} // namespace

int evalCommand(const Arguments& arguments)
{
    ArgList args(arguments, "eval");
    std::vector<std::string> paths;
    while (!args.done()) {
        const std::string t = args.next();
        if (t == "-h" || t == "--help") {
            std::cout << helpText("eval");
            return 0;
        }
        if (isOption(t))
            args.unknownOption(t);
        else if (paths.size() < 2)
            paths.push_back(t);
        else
            args.unexpected(t);
    }
    if (paths.size() < 2)
        throw UsageError("eval needs two LAS files: REFERENCE.las CLASSIFIED.las");
    for (const auto& p : paths)
        requireReadableFile(p, "input");
    const auto reference = vx::las::LasFile::read(paths[0]);
    const auto classified = vx::las::LasFile::read(paths[1]);
    if (reference.size() != classified.size())
        throw std::runtime_error("'" + paths[0] + "' holds " +
                                 grouped(static_cast<long long>(reference.size())) + " points and '" +
                                 paths[1] + "' " + grouped(static_cast<long long>(classified.size())) +
                                 "; eval compares the same points in the same order");

    // The files should hold one cloud; a point out of place means the orders differ.
    std::size_t moved = 0;
    for (std::size_t i = 0; i < reference.size(); ++i)
        if (std::fabs(reference.x(i) - classified.x(i)) > 1e-3 ||
            std::fabs(reference.y(i) - classified.y(i)) > 1e-3 ||
            std::fabs(reference.z(i) - classified.z(i)) > 1e-3)
            ++moved;
    if (moved > 0)
        std::cerr << "vexaro: warning: " << grouped(static_cast<long long>(moved))
                  << " points lie elsewhere in the two files; the comparison assumes the same points in the "
                     "same order"
                  << std::endl;

    std::cout << "Reference   " << paths[0] << "\nClassified  " << paths[1] << "\n\n";
    std::cout << formatEvaluation(evaluate(classesOf(reference), classesOf(classified)));
    return 0;
}

} // namespace vx::app
