#include "Commands.h"
#include "Evaluation.h"
#include "FileChecks.h"
#include "Format.h"
#include "Preview.h"
#include "RunOptions.h"
#include "scene/Scene.h"

#include <chrono>
#include <climits>
#include <iostream>

namespace vx::app {

namespace {

double since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void printAccuracy(const Evaluation& e)
{
    std::cout << "\nAccuracy against the scene's truth\n";
    std::cout << "  ground total error    " << percent(e.totalError) << "   (type I " << percent(e.typeI)
              << ", type II " << percent(e.typeII) << ", kappa "
              << (e.kappa == e.kappa ? fixed(e.kappa, 4) : "n/a") << ")\n";
    for (int k : {kBuildingCategory, kVegetationCategory}) {
        std::string name = std::string(categoryName(k)) + " F1";
        name.resize(22, ' ');
        std::cout << "  " << name << percent(e.f1(k)) << "   (precision " << percent(e.precision(k))
                  << ", recall " << percent(e.recall(k)) << ")\n";
    }
    std::cout << "  overall accuracy      " << percent(e.overallAccuracy())
              << "   (ground, building, vegetation, other)\n";
}

} // namespace

int demoCommand(const Arguments& arguments)
{
    ArgList args(arguments, "demo");
    RunOptions run;
    std::string folder = "vexaro-demo";
    vx::scene::SceneOptions scene;
    while (!args.done()) {
        const std::string t = args.next();
        if (t == "-h" || t == "--help") {
            std::cout << helpText("demo");
            return 0;
        }
        if (t == "--out")
            folder = args.value(t);
        else if (t == "--points")
            scene.targetPoints = static_cast<std::size_t>(args.integer(t, 10000, 10000000));
        else if (t == "--seed")
            scene.seed = static_cast<uint64_t>(args.integer(t, 0, LLONG_MAX));
        else if (parseRunOption(args, t, run))
            continue;
        else if (isOption(t))
            args.unknownOption(t);
        else
            args.unexpected(t);
    }

    const auto settings = collectSettings(run);
    requireFolder(folder);
    const std::string scenePath = folder + "/scene.las", truthPath = folder + "/truth.las";
    const std::string classifiedPath = folder + "/classified.las", previewPath = folder + "/preview.png";
    for (const auto& path : {scenePath, truthPath, classifiedPath, previewPath})
        requireWritableFile(path, "output");
    LibraryOutput libraryOutput(run.verbose, run.logPath);
    Reporter reporter(run.quiet);

    auto start = std::chrono::steady_clock::now();
    const auto generated = vx::scene::generateScene(scene);
    reporter.line("generate scene", since(start),
                  grouped(static_cast<long long>(generated.points.size())) + " points, " +
                      std::to_string(generated.buildings) + " buildings, " + std::to_string(generated.trees) +
                      " trees, " + std::to_string(generated.shrubs) + " shrubs, seed " +
                      std::to_string(scene.seed));
    start = std::chrono::steady_clock::now();
    vx::scene::writeSceneLas(generated, scenePath, truthPath);
    reporter.line("write scene", since(start), scenePath + ", " + truthPath);

    PipelineOptions pipeline;
    pipeline.output = classifiedPath;
    const RunResult result = runClassification(run, settings, pipeline, scenePath, libraryOutput, reporter);

    start = std::chrono::steady_clock::now();
    writeLasPreview(classifiedPath, previewPath, "DEMO SEED " + std::to_string(scene.seed));
    reporter.line("preview", since(start), previewPath);

    std::vector<int> truth;
    truth.reserve(generated.points.size());
    for (const auto& p : generated.points)
        truth.push_back(p.truth);
    const Evaluation e = evaluate(truth, result.classes);
    if (!run.quiet) {
        std::cout << "\nClasses of " << classifiedPath << "\n" << classSummary(result.classes);
        printAccuracy(e);
        std::cout << "\nClassified " << grouped(static_cast<long long>(result.classes.size()))
                  << " points in " << fixed(result.seconds, 2) << " s on the " << result.backend
                  << " backend.\n"
                  << "Files: " << scenePath << ", " << truthPath << ", " << classifiedPath << ", "
                  << previewPath << "\n"
                  << "Full report: vexaro eval " << truthPath << ' ' << classifiedPath << "\n";
    }
    return 0;
}

} // namespace vx::app
