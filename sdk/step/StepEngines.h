// The engines of this room: STEP in and out.
#pragma once

#include "sdk/model/EngineRegistry.h"

namespace cadex {
namespace internal {

void RegisterStepEngines(EngineRegistry& registry);

} // namespace internal
} // namespace cadex
