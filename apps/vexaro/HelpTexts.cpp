#include "Commands.h"
#include "ParameterTable.h"
#include "RunOptions.h"

namespace vx::app {

const char* toolVersion()
{
    return "0.1.0";
}

namespace {

const char* kGeneral =
    "vexaro: classification of airborne LiDAR point clouds (LAS files)\n"
    "\n"
    "Usage: vexaro COMMAND [OPTIONS]\n"
    "\n"
    "Commands:\n"
    "  classify INPUT.las -o OUTPUT.las   classify: ground, buildings, vegetation, low points\n"
    "  demo [--out DIR]                   generate a synthetic scene, classify it, report accuracy\n"
    "  info FILE.las                      header, bounds and class histogram of a LAS file\n"
    "  eval REFERENCE.las CLASSIFIED.las  accuracy of a classification against a reference\n"
    "  devices                            compute devices and the backend that would be used\n"
    "  params [--markdown]                the parameters: names, defaults, valid values, help\n"
    "\n"
    "Options:\n"
    "  -h, --help     this help; 'vexaro COMMAND --help' describes a command\n"
    "  --version      print the version\n"
    "\n"
    "Exit status: 0 done, 1 failed (files, data, device), 2 mistake on the command line.\n";

const char* kClassify =
    "Usage: vexaro classify INPUT.las -o OUTPUT.las [OPTIONS]\n"
    "\n"
    "Classifies every point of INPUT.las with the recommended pipeline (docs/pipeline.md) and\n"
    "writes OUTPUT.las: the input file with only the classes changed. Classes: 1 unclassified,\n"
    "2 ground, 3/4/5 low/medium/high vegetation, 6 building, 7 low point (noise).\n"
    "\n"
    "Options:\n"
    "  -o, --output FILE      the classified LAS file (required)\n"
    "  --normals BASENAME     write the normal vectors to BASENAME.txt\n"
    "  --preview FILE.png     write a picture: top view by class, legend, cross-section\n"
    "  --hag                  add each point's height above the final ground to OUTPUT.las as the\n"
    "                         extra-bytes dimension HeightAboveGround (float, metres)\n";

const char* kDemo =
    "Usage: vexaro demo [--out DIR] [--points N] [--seed S] [OPTIONS]\n"
    "\n"
    "Generates the built-in synthetic scene (rolling terrain with a ridge and a ditch; flat,\n"
    "gabled and hipped buildings; trees with several returns per pulse, shrubs, grass; a few low\n"
    "noise points), classifies it with the pipeline of 'vexaro classify' and prints the accuracy\n"
    "against the scene's truth. DIR receives:\n"
    "  scene.las        the scene as a classifier gets it (every point of class 1)\n"
    "  truth.las        the same points with their true classes\n"
    "  classified.las   the classified scene\n"
    "  preview.png      top view, legend and cross-section of the classified scene\n"
    "\n"
    "Options:\n"
    "  --out DIR              output folder (default: vexaro-demo)\n"
    "  --points N             size of the scene, 10000 to 10000000 points (default: 300000)\n"
    "  --seed S               seed of the scene (default: 1); a seed gives the same scene everywhere\n";

const char* kInfo =
    "Usage: vexaro info FILE.las\n"
    "\n"
    "Prints the LAS version, point format, point count, bounds, scale and offset of FILE.las\n"
    "and how many points each class holds, with the ASPRS class names.\n"
    "\n"
    "Options:\n"
    "  -h, --help             this help\n";

const char* kEval =
    "Usage: vexaro eval REFERENCE.las CLASSIFIED.las\n"
    "\n"
    "Compares the classes of two files holding the same points in the same order:\n"
    "  ground against non-ground: type I error (reference ground classified otherwise, of all\n"
    "  reference ground), type II error (reference non-ground classified ground, of all reference\n"
    "  non-ground), total error and Cohen's kappa;\n"
    "  a confusion matrix over ground (2), building (6), vegetation (3, 4, 5) and other, with\n"
    "  precision, recall and F1 of each.\n"
    "\n"
    "Options:\n"
    "  -h, --help             this help\n";

const char* kDevices =
    "Usage: vexaro devices\n"
    "\n"
    "Lists the compute devices the library sees and the backend a classification would use.\n"
    "Without a CUDA device (or in a build without CUDA) the CPU is the one device.\n"
    "\n"
    "Options:\n"
    "  -h, --help             this help\n";

const char* kParams = "Usage: vexaro params [--markdown]\n"
                      "\n"
                      "Lists the parameters that --set and --params take. With --markdown, the library's\n"
                      "parameters as the Markdown table of docs/parameters.md.\n"
                      "\n"
                      "Options:\n"
                      "  --markdown     the Markdown document\n"
                      "  -h, --help     this help\n";

} // namespace

std::string helpText(const std::string& command)
{
    if (command == "classify" || command == "demo") {
        std::string text = command == "classify" ? kClassify : kDemo;
        text += runOptionsHelp();
        text += "  -h, --help             this help\n\nParameters (--set Name=value, --params FILE):\n";
        text += parameterHelp();
        return text;
    }
    if (command == "info")
        return kInfo;
    if (command == "eval")
        return kEval;
    if (command == "devices")
        return kDevices;
    if (command == "params")
        return kParams;
    return kGeneral;
}

} // namespace vx::app
