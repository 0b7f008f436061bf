// Puts the engines of this build together. Explicit calls, since a linker may drop what only registers
// itself.
#include "sdk/model/EngineRegistry.h"

#if __has_include("sdk/occt/OcctEngines.h")
#include "sdk/occt/OcctEngines.h"
#define CADEX_HAS_OCCT
#endif
#if __has_include("sdk/part21/Part21Engines.h")
#include "sdk/part21/Part21Engines.h"
#define CADEX_HAS_PART21
#endif
#if defined(CADEX_WITH_IFC) && __has_include("sdk/ifc/IfcEngines.h")
#include "sdk/ifc/IfcEngines.h"
#define CADEX_HAS_IFC
#endif

namespace cadex {
namespace internal {

void RegisterEngines(EngineRegistry& registry)
{
    (void)registry;
#ifdef CADEX_HAS_OCCT
    RegisterOcctEngines(registry);
#endif
#ifdef CADEX_HAS_PART21
    RegisterPart21Engines(registry);
#endif
#ifdef CADEX_HAS_IFC
    RegisterIfcEngines(registry);
#endif
}

} // namespace internal
} // namespace cadex
