// The unit tests of the tool's own code (scene, parameters, evaluation) need the tool's library,
// vexaro_app, linked into this suite; the build defines VEXARO_APP_LINKED when it is.
#pragma once
