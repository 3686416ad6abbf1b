#include "Commands.h"
#include "FileChecks.h"
#include "Format.h"
#include "Presets.h"
#include "Preview.h"
#include "RunOptions.h"

#include <chrono>
#include <filesystem>
#include <iostream>

namespace vx::app {

namespace {

double since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

int classifyCommand(const Arguments& arguments)
{
    ArgList args(arguments, "classify");
    RunOptions run;
    std::string input, output, normals, preview;
    bool heightAboveGround = false;
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
        else if (parseRunOption(args, t, run))
            continue;
        else if (isOption(t))
            args.unknownOption(t);
        else if (input.empty())
            input = t;
        else
            args.unexpected(t);
    }
    if (input.empty())
        throw UsageError("classify needs an input file (see 'vexaro classify --help')");
    if (output.empty())
        throw UsageError("classify needs an output file: -o OUTPUT.las");

    // Everything that could stop the run is checked before the long work starts.
    const auto settings = collectSettings(run);
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
