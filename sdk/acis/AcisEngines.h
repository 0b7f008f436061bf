// The engines of the ACIS format.
#pragma once

#include "sdk/model/EngineRegistry.h"

namespace cadex {
namespace internal {

void RegisterAcisEngines(EngineRegistry& registry);

} // namespace internal
} // namespace cadex
