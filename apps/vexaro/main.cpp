// The vexaro command-line tool.
#include "Commands.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

int main(int argc, char** argv)
{
#if defined(__GLIBC__)
    // Blocks of 1 MiB and more (the per-point arrays of a cloud) are mapped on their own and go
    // back to the system when freed. glibc otherwise raises this threshold to the largest block
    // freed so far, later arrays of the steps then stay in the heap after use, and the peak
    // resident size exceeds the data held at any one time by a fifth.
    mallopt(M_MMAP_THRESHOLD, 1 << 20);
#endif
    return vx::app::runTool(argc, argv);
}
