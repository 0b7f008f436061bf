#include "sdk/parasolid/ParasolidEngines.h"

#include "sdk/mesh/StreamedWriterEngine.h"
#include "sdk/occt/FileReaderEngine.h"
#include "sdk/parasolid/ParasolidTree.h"
#include "sdk/parasolid/ParasolidWriter.h"

namespace cadex {
namespace internal {

void RegisterParasolidEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::Parasolid,
                       [] { return std::make_unique<occt::FileReaderEngine<parasolid::ParasolidFile>>(); });
    registry.SetWriter(Format::Parasolid, [] {
        return std::make_unique<mesh::ModelWriterEngine<parasolid::ParasolidWriter>>();
    });
}

} // namespace internal
} // namespace cadex
