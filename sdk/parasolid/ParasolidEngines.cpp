#include "sdk/parasolid/ParasolidEngines.h"

#include <iterator>

#include "sdk/mesh/StreamedWriterEngine.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/parasolid/ParasolidTree.h"
#include "sdk/parasolid/ParasolidWriter.h"
#include "sdk/text/FileBytes.h"

namespace cadex {
namespace internal {
namespace {

class ParasolidReaderEngine final : public ReaderEngine
{
public:
    bool ReadFile(const std::filesystem::path& file, const Base_ReaderParameters&) override
    {
        std::string bytes;
        return text::ReadBytes(file, bytes) && Load(bytes, text::StemOf(file));
    }

    bool ReadStream(std::istream& stream, const Base_ReaderParameters&) override
    {
        const std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        return !stream.bad() && Load(bytes, {});
    }

    bool Transfer(ModelData_Model& model) override
    {
        return occt::RunGuarded(occt::EngineUse::Geometry, [&] {
            myFile.Build(model);
            return true;
        });
    }

private:
    bool Load(const std::string& bytes, const Base_UTF16String& name)
    {
        return occt::RunGuarded(occt::EngineUse::Geometry, [&] { return myFile.Load(bytes, name); });
    }

    parasolid::ParasolidFile myFile;
};

} // namespace

void RegisterParasolidEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::Parasolid, [] { return std::make_unique<ParasolidReaderEngine>(); });
    registry.SetWriter(Format::Parasolid, [] {
        return std::make_unique<mesh::ModelWriterEngine<parasolid::ParasolidWriter>>();
    });
}

} // namespace internal
} // namespace cadex
