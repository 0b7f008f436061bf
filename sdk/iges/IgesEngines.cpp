#include "sdk/iges/IgesEngines.h"

#include "sdk/iges/IgesReaderEngine.h"
#include "sdk/iges/IgesWriterEngine.h"

namespace cadex {
namespace internal {

void RegisterIgesEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::IGES, iges::MakeIgesEngine);
    registry.SetWriter(Format::IGES, [] { return std::make_unique<iges::IgesWriterEngine>(); });
}

} // namespace internal
} // namespace cadex
