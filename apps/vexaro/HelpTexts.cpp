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
    "  scene -o INPUT.las                 write a synthetic scene (town, hall, terraces, forest,\n"
    "                                     mountain-forest, bridges, river)\n"
    "  info FILE.las                      header, bounds, classes and data profile of a LAS file\n"
    "  eval REFERENCE.las CLASSIFIED.las  accuracy of a classification against a reference\n"
    "  eval REF_DIR RESULT_DIR            the same for every LAS file of a folder, as a table\n"
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
    "       vexaro classify IN_DIR|FILES...|'PATTERN' -o OUT_DIR [OPTIONS]\n"
    "\n"
    "Classifies every point of INPUT.las with the recommended pipeline (docs/pipeline.md) and\n"
    "writes OUTPUT.las: the input file with only the classes changed. Classes: 1 unclassified,\n"
    "2 ground, 3/4/5 low/medium/high vegetation, 6 building, 7 low point (noise), 17 bridge\n"
    "deck.\n"
    "\n"
    "Options:\n"
    "  -o, --output FILE      the classified LAS file (required)\n"
    "  --normals BASENAME     write the normal vectors to BASENAME.txt\n"
    "  --preview FILE.png     write a picture: top view by class, legend, cross-section\n"
    "  --hag                  add each point's height above the final ground to OUTPUT.las as the\n"
    "                         extra-bytes dimension HeightAboveGround (float, metres)\n"
    "  --memory SIZE          memory budget, e.g. 4G or 512M (default: half of the machine's);\n"
    "                         a larger file is classified in tiles with a buffer and written\n"
    "                         back in its own order\n"
    "  --buffer METRES        width of the buffer ring around each tile (default: the widest\n"
    "                         reach of the steps, 60 m with --preset auto)\n"
    "  --resume               with a folder: skip tiles whose output already exists\n"
    "\n"
    "Files may be LAS or LAZ (.laz, when built with LASzip); the output is LAZ when its name ends\n"
    "in .laz. Several files, a folder or a quoted pattern are tiles of one landscape: each is\n"
    "classified with a buffer of points from the neighbours its header's bounds touch and written\n"
    "to OUT_DIR under its own name. Under 'mpirun -np N' the tiles are spread over the ranks.\n";

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

const char* kScene =
    "Usage: vexaro scene -o INPUT.las [--truth TRUTH.las] [OPTIONS]\n"
    "\n"
    "Writes a synthetic airborne scan as LAS 1.4 (point format 6, WKT coordinate system):\n"
    "INPUT.las with every point of class 1, as a classifier gets it, and TRUTH.las with the true\n"
    "classes: 2 ground, 3/4/5 low/medium/high vegetation by the height above the bare earth\n"
    "(0.4 and 2 m), 6 building, 7 low noise, 17 bridge deck, 18 high noise. Prints the scene's\n"
    "size and the share of each class in the truth.\n"
    "\n"
    "Options:\n"
    "  -o, --output FILE      the scene (required)\n"
    "  --truth FILE           the same points with their true classes\n"
    "  --kind KIND            town (rolling terrain, houses, trees; also 'flat'), hall (an 80 m x\n"
    "                         60 m flat-roofed hall on gentle ground; at least 150 m wide),\n"
    "                         terraces (30-degree slopes and terraces with 1-2 m steps), forest\n"
    "                         (closed canopy over shrubs) or mountain-forest (that forest on a\n"
    "                         22-31 degree mountainside cut by a gully), bridges (the town cut\n"
    "                         by a channel 5-8 m deep that road bridges cross) or river (the\n"
    "                         bridges' channel holding a river whose dark surface returns a\n"
    "                         quarter of the pulses) (default: town)\n"
    "  --density D            pulses per square metre, above 0 and up to 1000 (default: 10)\n"
    "  --points N             size of the scene, 10 to 50000000 points (default: 300000)\n"
    "  --units U              metres, feet (0.3048 m) or us-feet (1200/3937 m): the same scene\n"
    "                         with every coordinate in that unit (default: metres)\n"
    "  --stray                add a few isolated returns 200 to 1500 m above and 5 to 50 m below\n"
    "                         the ground\n"
    "  --seed S               seed of the scene (default: 1); a seed gives the same scene everywhere\n"
    "  -q, --quiet            print nothing but errors\n"
    "  -h, --help             this help\n";

const char* kInfo =
    "Usage: vexaro info FILE.las [--units U]\n"
    "\n"
    "Prints the LAS version, point format, point count, bounds, scale and offset of FILE.las,\n"
    "how many points each class holds, with the ASPRS class names, and the data profile: length\n"
    "units (from the file's WKT or GeoTIFF keys), extent and occupied area, robust height range\n"
    "(1st and 99th percentile), density and spacing of all points and of last returns over the\n"
    "occupied area, returns per pulse and points suspected as noise (far from every neighbour or\n"
    "far outside the height range). Warnings about data the classification cannot handle go to\n"
    "standard error.\n"
    "\n"
    "Options:\n"
    "  --units U              length unit of the coordinates, overriding the file's:\n"
    "                         metres (m), feet (ft) or us-feet (us-ft, ftUS)\n"
    "  -h, --help             this help\n";

const char* kEval =
    "Usage: vexaro eval REFERENCE.las CLASSIFIED.las [--csv]\n"
    "       vexaro eval REF_DIR RESULT_DIR [--csv]\n"
    "\n"
    "Compares the classes of two files holding the same points in the same order:\n"
    "  ground against non-ground: type I error (reference ground classified otherwise, of all\n"
    "  reference ground), type II error (reference non-ground classified ground, of all reference\n"
    "  non-ground), total error and Cohen's kappa;\n"
    "  a confusion matrix over ground (2), building (6), vegetation (3, 4, 5) and other, with\n"
    "  precision, recall and F1 of each;\n"
    "  the tier accuracy: of the reference vegetation points (3, 4, 5), the share classified with\n"
    "  the very same class.\n"
    "Reference class 0 (never classified) is left out; every class not named above (1, noise 7\n"
    "and 18, water, producers' own codes such as 208 and 214) counts as other.\n"
    "\n"
    "With two folders, every LAS file of REF_DIR is compared with the file of the same name in\n"
    "RESULT_DIR and a table is printed: one row per file (points, ground type I, type II and\n"
    "total error in %, kappa, building F1 and vegetation F1 in %, tier accuracy in %, seconds)\n"
    "and a mean row over the compared files where a figure is defined (n/a figures are skipped;\n"
    "points: the total). A file without a result, or that cannot be compared, gets a row saying\n"
    "so and the exit status is 1. Seconds come from NAME.seconds beside NAME.las in RESULT_DIR\n"
    "(one number), '-' without one.\n"
    "\n"
    "Options:\n"
    "  --csv                  print the table as CSV (percent figures, empty where undefined)\n"
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
    if (command == "scene")
        return kScene;
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
