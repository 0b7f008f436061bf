// The engines of this room: IGES in and out.
#pragma once

#include "sdk/model/EngineRegistry.h"

namespace cadex {
namespace internal {

void RegisterIgesEngines(EngineRegistry& registry);

} // namespace internal
} // namespace cadex
