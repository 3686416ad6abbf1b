// The subcommands of the vexaro tool. Each takes the arguments after its name and returns the
// exit status; mistakes are thrown (UsageError: status 2, other errors: status 1).
#pragma once

#include <string>
#include <vector>

namespace vx::app {

using Arguments = std::vector<std::string>;

int classifyCommand(const Arguments& args);
int demoCommand(const Arguments& args);
int sceneCommand(const Arguments& args);
int infoCommand(const Arguments& args);
int evalCommand(const Arguments& args);
int devicesCommand(const Arguments& args);
int paramsCommand(const Arguments& args);

/// Help text of a command, or the general help for "".
std::string helpText(const std::string& command);

/// The tool's version.
const char* toolVersion();

/// Parses the command line, runs the command, prints errors as "vexaro: error: ...".
int runTool(int argc, char** argv);

} // namespace vx::app
