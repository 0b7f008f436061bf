#include "tests/sdk/parasolid/XtShapes.h"
