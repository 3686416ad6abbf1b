#include "Commands.h"
#include "ParameterTable.h"

#include <iostream>

namespace vx::app {

namespace {

bool isHelp(const std::string& s)
{
    return s == "-h" || s == "--help";
}

int dispatch(const Arguments& args)
{
    if (args.empty()) {
        std::cerr << helpText("");
        return 2;
    }
    const std::string& command = args[0];
    const Arguments rest(args.begin() + 1, args.end());
    if (isHelp(command)) {
        std::cout << helpText("");
        return 0;
    }
    if (command == "--version") {
        std::cout << "vexaro " << toolVersion() << '\n';
        return 0;
    }
    if (command == "help") {
        if (rest.empty()) {
            std::cout << helpText("");
            return 0;
        }
        return dispatch({rest[0], "--help"});
    }
    if (command == "classify")
        return classifyCommand(rest);
    if (command == "demo")
        return demoCommand(rest);
    if (command == "scene")
        return sceneCommand(rest);
    if (command == "info")
        return infoCommand(rest);
    if (command == "eval")
        return evalCommand(rest);
    if (command == "devices")
        return devicesCommand(rest);
    if (command == "params")
        return paramsCommand(rest);
    if (command.size() > 1 && command[0] == '-')
        throw UsageError("unknown option '" + command + "' (see 'vexaro --help')");
    throw UsageError("unknown command '" + command + "' (see 'vexaro --help')");
}

} // namespace

int runTool(int argc, char** argv)
{
    try {
        return dispatch(Arguments(argv + 1, argv + argc));
    } catch (const UsageError& e) {
        std::cout.flush();
        std::cerr << "vexaro: error: " << e.what() << std::endl;
        return 2;
    } catch (const std::exception& e) {
        std::cout.flush();
        std::cerr << "vexaro: error: " << e.what() << std::endl;
        return 1;
    }
}

} // namespace vx::app
