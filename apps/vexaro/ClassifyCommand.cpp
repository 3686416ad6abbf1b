#include "Commands.h"
#include "FileChecks.h"
#include "Format.h"
#include "MemoryBudget.h"
#include "Presets.h"
#include "Preview.h"
#include "Ranks.h"
#include "RunOptions.h"
#include "TiledClassify.h"

#include <las/RecordStream.h>

#include <chrono>
#include <filesystem>
#include <iostream>

namespace vx::app {

namespace {

double since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// True when the inputs are several files, a folder or a pattern: a run over tiles.
bool namesTiles(const std::vector<std::string>& inputs)
{
    std::error_code ec;
    return inputs.size() > 1 || std::filesystem::is_directory(inputs.front(), ec) ||
           (inputs.front().find_first_of("*?[") != std::string::npos &&
            !std::filesystem::exists(inputs.front(), ec));
}

double parseBufferMetres(const std::string& text)
{
    try {
        std::size_t used = 0;
        const double v = std::stod(text, &used);
        if (used == text.size() && v >= 0 && v <= 10000)
            return v;
    } catch (const std::exception&) {
    }
    throw UsageError("--buffer takes a width in metres from 0 to 10000, not '" + text + "'");
}

} // namespace

int classifyCommand(const Arguments& arguments)
{
    ArgList args(arguments, "classify");
    RunOptions run;
    std::vector<std::string> inputs;
    std::string output, normals, preview;
    bool heightAboveGround = false;
    TiledOptions tiled;
    while (!args.done()) {
        const std::string t = args.next();
        if (t == "-h" || t == "--help") {
            std::cout << helpText("classify") << '\n' << derivationRules();
            return 0;
        }
        if (t == "-o" || t == "--output")
            output = args.value(t);
        else if (t == "--normals")
            normals = args.value(t);
        else if (t == "--preview")
            preview = args.value(t);
        else if (t == "--hag")
            heightAboveGround = true;
        else if (t == "--memory")
            tiled.memory = parseMemorySize(args.value(t), t);
        else if (t == "--buffer")
            tiled.bufferMetres = parseBufferMetres(args.value(t));
        else if (t == "--resume")
            tiled.resume = true;
        else if (parseRunOption(args, t, run))
            continue;
        else if (isOption(t))
            args.unknownOption(t);
        else
            inputs.push_back(t);
    }
    if (inputs.empty())
        throw UsageError("classify needs an input file (see 'vexaro classify --help')");
    if (output.empty())
        throw UsageError("classify needs an output file: -o OUTPUT.las");

    const auto settings = collectSettings(run);
    tiled.inputs = inputs;
    tiled.output = output;
    if (namesTiles(inputs)) {
        if (!preview.empty() || !normals.empty())
            throw UsageError("--preview and --normals take one input file, not a folder of tiles");
        LibraryOutput libraryOutput(run.verbose, run.logPath);
        TileSettings tiles{run, settings, PipelineOptions{}, &libraryOutput};
        tiles.pipeline.writeHeightAboveGround = heightAboveGround;
        return classifyFolder(tiled, tiles);
    }
    const std::string input = inputs.front();
    {
        // The ranks of a job would all write the one output: refused on every rank alike, after
        // joining the job, so that the launcher sees each rank end.
        const Ranks ranks;
        if (ranks.size() > 1)
            throw UsageError("started as " + std::to_string(ranks.size()) +
                             " MPI ranks, but one file is classified by one process; give the ranks a "
                             "folder of tiles, or run a single process");
    }

    // Everything that could stop the run is checked before the long work starts.
    requireReadableFile(input, "input");
    requireWritableFile(output, "output");
    if (sameFile(input, output))
        throw std::runtime_error("the output '" + output + "' is the input file; choose another output name");
    if (!preview.empty())
        requireWritableFile(preview, "preview");
    if (!normals.empty())
        requireWritableFile(normals + ".txt", "normals file");
    LibraryOutput libraryOutput(run.verbose, run.logPath);
    Reporter reporter(run.quiet);

    const uint64_t points = vx::las::RecordReader(input).header().pointCount;
    const uint64_t budget = tiled.memory ? tiled.memory : defaultMemoryBudget();
    if (points > pointsWithin(budget)) {
        if (!normals.empty())
            throw UsageError("--normals needs the whole file in memory: " + std::to_string(points) +
                             " points are more than a budget of " + formatBytes(budget) + " holds");
        TileSettings tiles{run, settings, PipelineOptions{}, &libraryOutput};
        tiles.pipeline.writeHeightAboveGround = heightAboveGround;
        const int status = classifyLargeFile(tiled, tiles, points);
        if (status == 0 && !preview.empty())
            writeLasPreview(output, preview, std::filesystem::path(output).filename().string());
        return status;
    }

    PipelineOptions pipeline;
    pipeline.output = output;
    pipeline.normalsBaseName = normals;
    pipeline.writeHeightAboveGround = heightAboveGround;
    const RunResult result = runClassification(run, settings, pipeline, input, libraryOutput, reporter);
    std::error_code ec;
    if (std::filesystem::file_size(output, ec) == 0 || ec)
        throw std::runtime_error("the library could not write '" + output + "'");

    if (!preview.empty()) {
        const auto start = std::chrono::steady_clock::now();
        writeLasPreview(output, preview, std::filesystem::path(output).filename().string());
        reporter.line("preview", since(start), preview);
    }
    if (!run.quiet) {
        std::cout << "\nClasses of " << output << "\n" << classSummary(result.classes);
        std::cout << "Classified in " << fixed(result.seconds, 2) << " s on the " << result.backend
                  << " backend.\n";
    }
    return 0;
}

} // namespace vx::app
