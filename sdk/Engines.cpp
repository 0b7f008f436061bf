// Puts the engines of this build together. Explicit calls, since a linker may drop what only registers
// itself.
#include "sdk/acis/AcisEngines.h"
#include "sdk/iges/IgesEngines.h"
#include "sdk/jt/JtEngines.h"
#include "sdk/model/EngineRegistry.h"
#include "sdk/parasolid/ParasolidEngines.h"
#include "sdk/rhino/RhinoEngines.h"
#include "sdk/solidworks/SldEngines.h"
#include "sdk/step/StepEngines.h"
#ifdef CADEX_WITH_IFC
#include "sdk/ifc/IfcEngines.h"
#endif

namespace cadex {
namespace internal {

void RegisterEngines(EngineRegistry& registry)
{
    RegisterAcisEngines(registry);
    RegisterParasolidEngines(registry);
    RegisterJtEngines(registry);
    RegisterRhinoEngines(registry);
    RegisterSolidWorksEngines(registry);
    RegisterStepEngines(registry);
    RegisterIgesEngines(registry);
#ifdef CADEX_WITH_IFC
    RegisterIfcEngines(registry);
#endif
}

} // namespace internal
} // namespace cadex
