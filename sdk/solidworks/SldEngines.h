// The engine of the SolidWorks formats, which reads.
#pragma once

#include "sdk/model/EngineRegistry.h"

namespace cadex {
namespace internal {

void RegisterSolidWorksEngines(EngineRegistry& registry);

} // namespace internal
} // namespace cadex
