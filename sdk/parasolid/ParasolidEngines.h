// The engines of the Parasolid format.
#pragma once

#include "sdk/model/EngineRegistry.h"

namespace cadex {
namespace internal {

void RegisterParasolidEngines(EngineRegistry& registry);

} // namespace internal
} // namespace cadex
