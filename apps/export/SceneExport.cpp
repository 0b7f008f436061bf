#include "apps/export/SceneExport.h"

#include "apps/export/OutputFile.h"
#include "apps/export/SceneParts.h"
#include "apps/export/Writers.h"

#include "host/CZemtarUnit.h"

#include <stdexcept>

using namespace Zemtar;

bool HasMeshopt()
{
#ifdef ZEMTAR_MESHOPTIMIZER
    return true;
#else
    return false;
#endif
}

std::vector<std::string> ExportScene(const CZemtarDocument& document, const std::string& file,
                                     const SceneExportSettings& settings)
{
    SceneParts scene(document);
    if (scene.Shapes().empty()) {
        throw std::runtime_error("the document has no shapes");
    }
    const CZemtarLengthRatio metres = CZemtarUnit::MetreRatio(settings.unit);
    const double unitsPerMetre = metres.denominator / metres.numerator;
    OutputFile output(file, settings.progress);
    output.GoOn();
    switch (settings.format) {
    case SceneFormat::None:
        throw std::runtime_error("no format is chosen");
    case SceneFormat::GLB:
        WriteGlb(scene, output, settings.packing);
        break;
    case SceneFormat::OBJ:
        WriteObj(scene, output, unitsPerMetre);
        break;
    case SceneFormat::PLY:
        WritePly(scene, output, unitsPerMetre);
        break;
    case SceneFormat::STL:
        WriteStl(scene, output, unitsPerMetre);
        break;
    }
    output.Commit();
    return std::move(scene.Notes());
}
