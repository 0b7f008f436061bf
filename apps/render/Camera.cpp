#include "apps/render/Camera.h"
