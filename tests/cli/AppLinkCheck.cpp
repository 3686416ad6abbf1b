#include "AppUnitTests.h"

#include <gtest/gtest.h>

#ifndef VEXARO_APP_LINKED
TEST(AppUnits, NeedTheToolLibrary)
{
    GTEST_SKIP()
        << "scene, parameter and evaluation unit tests are off: this suite is built without vexaro_app "
           "(link it and define VEXARO_APP_LINKED)";
}
#endif
