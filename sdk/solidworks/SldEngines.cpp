#include "sdk/solidworks/SldEngines.h"

#include "sdk/occt/FileReaderEngine.h"
#include "sdk/solidworks/SldTree.h"

namespace cadex {
namespace internal {

void RegisterSolidWorksEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::SolidWorks,
                       [] { return std::make_unique<occt::FileReaderEngine<solidworks::SolidWorksFile>>(); });
}

} // namespace internal
} // namespace cadex
