// The engines of this room: the STEP writer.
#pragma once

#include "sdk/model/EngineRegistry.h"

namespace cadex {
namespace internal {

void RegisterPart21Engines(EngineRegistry& registry);

} // namespace internal
} // namespace cadex
