// The engines of the 3DM format.
#pragma once

#include "sdk/model/EngineRegistry.h"

namespace cadex {
namespace internal {

void RegisterRhinoEngines(EngineRegistry& registry);

} // namespace internal
} // namespace cadex
