#include "sdk/acis/AcisEngines.h"

#include "sdk/acis/AcisTree.h"
#include "sdk/acis/AcisWriter.h"
#include "sdk/mesh/StreamedWriterEngine.h"
#include "sdk/occt/FileReaderEngine.h"

namespace cadex {
namespace internal {

void RegisterAcisEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::ACIS,
                       [] { return std::make_unique<occt::FileReaderEngine<acis::AcisFile>>(); });
    registry.SetWriter(Format::ACIS,
                       [] { return std::make_unique<mesh::ModelWriterEngine<acis::AcisWriter>>(); });
}

} // namespace internal
} // namespace cadex
