// The vexaro command-line tool.
#include "Commands.h"

int main(int argc, char** argv)
{
    return vx::app::runTool(argc, argv);
}
