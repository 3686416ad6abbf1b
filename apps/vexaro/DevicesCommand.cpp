#include "Args.h"
#include "Commands.h"
#include "Console.h"
#include "ParameterTable.h"

#include <Vexaro.h>

#include <iostream>

namespace vx::app {

int devicesCommand(const Arguments& arguments)
{
    ArgList args(arguments, "devices");
    while (!args.done()) {
        const std::string t = args.next();
        if (t == "-h" || t == "--help") {
            std::cout << helpText("devices");
            return 0;
        }
        if (isOption(t))
            args.unknownOption(t);
        args.unexpected(t);
    }
    std::map<int, std::string> devices;
    std::string backend;
    {
        LibraryOutput quiet(false, "");
        LibraryOutput::Redirect redirect(quiet);
        Vexaro<float> v;
        devices = v.getAvailableDevices();
        backend = v.computeBackend();
    }
#ifdef VEXARO_HAVE_CUDA
    std::cout << "CUDA backend    built in\n";
#else
    std::cout << "CUDA backend    not built\n";
#endif
    std::cout << "Backend in use  " << backend << "\nDevices\n";
    for (const auto& [index, name] : devices)
        std::cout << "  " << index << "  " << name << '\n';
    return 0;
}

} // namespace vx::app
