#include "sdk/ifc/IfcEngines.h"

#include <iterator>

#include "sdk/ifc/IfcTree.h"
#include "sdk/ifc/IfcWriter.h"
#include "sdk/mesh/StreamedWriterEngine.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/text/FileBytes.h"

namespace cadex {
namespace internal {
namespace {

class IfcReaderEngine final : public ReaderEngine
{
public:
    bool ReadFile(const std::filesystem::path& path, const Base_ReaderParameters&) override
    {
        std::string bytes;
        return text::ReadBytes(path, bytes) && myFile.Load(std::move(bytes));
    }

    bool ReadStream(std::istream& stream, const Base_ReaderParameters&) override
    {
        std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        return !stream.bad() && myFile.Load(std::move(text));
    }

    bool Transfer(ModelData_Model& model) override
    {
        return occt::RunGuarded(occt::EngineUse::Geometry,
                                [&] { return ifc::ModelBuilder(myFile).Build(model); });
    }

private:
    ifc::IfcFile myFile;
};

} // namespace

void RegisterIfcEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::IFC, [] { return std::make_unique<IfcReaderEngine>(); });
    registry.SetWriter(Format::IFC,
                       [] { return std::make_unique<mesh::StreamedWriterEngine<ifc::IfcWriter>>(); });
}

} // namespace internal
} // namespace cadex
