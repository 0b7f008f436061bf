// Puts the engines of this build together. Explicit calls, since a linker may drop what only registers
// itself.
#include "sdk/model/EngineRegistry.h"

#include "sdk/occt/OcctEngines.h"
#include "sdk/part21/Part21Engines.h"
#ifdef CADEX_WITH_IFC
#include "sdk/ifc/IfcEngines.h"
#endif

namespace cadex {
namespace internal {

void RegisterEngines(EngineRegistry& registry)
{
    RegisterOcctEngines(registry);
    RegisterPart21Engines(registry);
#ifdef CADEX_WITH_IFC
    RegisterIfcEngines(registry);
#endif
}

} // namespace internal
} // namespace cadex
