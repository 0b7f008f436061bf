// The engines of this room.
#pragma once

#include "sdk/model/EngineRegistry.h"

namespace cadex {
namespace internal {

/// STEP and IGES in, IGES out.
void RegisterOcctEngines(EngineRegistry& registry);

} // namespace internal
} // namespace cadex
