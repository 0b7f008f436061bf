// The engines of this room: IFC in and out.
#pragma once

#include "sdk/model/EngineRegistry.h"

namespace cadex {
namespace internal {

void RegisterIfcEngines(EngineRegistry& registry);

} // namespace internal
} // namespace cadex
