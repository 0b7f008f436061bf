#include "sdk/rhino/RhinoEngines.h"

#include <iterator>

#include "sdk/mesh/StreamedWriterEngine.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/rhino/RhinoTree.h"
#include "sdk/rhino/RhinoWriter.h"
#include "sdk/text/FileBytes.h"

namespace cadex {
namespace internal {
namespace {

class RhinoReaderEngine final : public ReaderEngine
{
public:
    bool ReadFile(const std::filesystem::path& file, const Base_ReaderParameters&) override
    {
        std::string bytes;
        myName = text::StemOf(file);
        return text::ReadBytes(file, bytes) && Load(std::move(bytes));
    }

    bool ReadStream(std::istream& stream, const Base_ReaderParameters&) override
    {
        std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        return !stream.bad() && Load(std::move(bytes));
    }

    bool Transfer(ModelData_Model& model) override
    {
        return occt::RunGuarded(occt::EngineUse::Geometry, [&] {
            rhino::ModelBuilder(myFile, myName).Build(model);
            return true;
        });
    }

private:
    bool Load(std::string bytes)
    {
        return occt::RunGuarded(occt::EngineUse::Geometry, [&] { return myFile.Load(std::move(bytes)); });
    }

    Base_UTF16String myName;
    rhino::RhinoFile myFile;
};

} // namespace

void RegisterRhinoEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::Rhino, [] { return std::make_unique<RhinoReaderEngine>(); });
    registry.SetWriter(Format::Rhino,
                       [] { return std::make_unique<mesh::StreamedWriterEngine<rhino::RhinoWriter>>(); });
}

} // namespace internal
} // namespace cadex
