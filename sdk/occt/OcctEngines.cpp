#include "sdk/occt/OcctEngines.h"

#include "sdk/occt/IgesEngine.h"
#include "sdk/occt/IgesWriterEngine.h"
#include "sdk/occt/StepEngine.h"

namespace cadex {
namespace internal {

void RegisterOcctEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::IGES, occt::MakeIgesEngine);
    registry.SetReader(Format::STEP, occt::MakeStepEngine);
    registry.SetWriter(Format::IGES, [] { return std::make_unique<occt::IgesWriterEngine>(); });
}

} // namespace internal
} // namespace cadex
