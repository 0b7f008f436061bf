#include "sdk/occt/OcctEngines.h"

#include "sdk/occt/StepEngine.h"

namespace cadex {
namespace internal {

void RegisterOcctEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::STEP, occt::MakeStepEngine);
}

} // namespace internal
} // namespace cadex
