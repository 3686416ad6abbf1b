#include "Args.h"
#include "Commands.h"
#include "ParameterTable.h"
#include "ParameterText.h"

#include <iostream>

namespace vx::app {

int paramsCommand(const Arguments& arguments)
{
    ArgList args(arguments, "params");
    bool markdown = false;
    while (!args.done()) {
        const std::string t = args.next();
        if (t == "-h" || t == "--help") {
            std::cout << helpText("params");
            return 0;
        }
        if (t == "--markdown") {
            markdown = true;
            continue;
        }
        if (isOption(t))
            args.unknownOption(t);
        args.unexpected(t);
    }
    std::cout << (markdown ? parametersMarkdown() : parameterHelp());
    return 0;
}

} // namespace vx::app
