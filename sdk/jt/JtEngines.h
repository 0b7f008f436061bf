// The engines of the JT format.
#pragma once

#include "sdk/model/EngineRegistry.h"

namespace cadex {
namespace internal {

void RegisterJtEngines(EngineRegistry& registry);

} // namespace internal
} // namespace cadex
