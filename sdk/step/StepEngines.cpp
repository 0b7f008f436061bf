#include "sdk/step/StepEngines.h"

#include "sdk/mesh/StreamedWriterEngine.h"
#include "sdk/step/StepReaderEngine.h"
#include "sdk/step/StepWriter.h"

namespace cadex {
namespace internal {

void RegisterStepEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::STEP, step::MakeStepEngine);
    registry.SetWriter(Format::STEP,
                       [] { return std::make_unique<mesh::StreamedWriterEngine<step::StepWriter>>(); });
}

} // namespace internal
} // namespace cadex
