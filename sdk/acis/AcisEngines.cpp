#include "sdk/acis/AcisEngines.h"

#include <iterator>

#include "sdk/acis/AcisTree.h"
#include "sdk/acis/AcisWriter.h"
#include "sdk/mesh/StreamedWriterEngine.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/text/FileBytes.h"

namespace cadex {
namespace internal {
namespace {

class AcisReaderEngine final : public ReaderEngine
{
public:
    bool ReadFile(const std::filesystem::path& file, const Base_ReaderParameters&) override
    {
        std::string bytes;
        return text::ReadBytes(file, bytes) && Load(std::move(bytes), text::StemOf(file));
    }

    bool ReadStream(std::istream& stream, const Base_ReaderParameters&) override
    {
        std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        return !stream.bad() && Load(std::move(bytes), {});
    }

    bool Transfer(ModelData_Model& model) override
    {
        return occt::RunGuarded(occt::EngineUse::Geometry, [&] {
            myFile.Build(model);
            return true;
        });
    }

private:
    bool Load(std::string bytes, const Base_UTF16String& name)
    {
        return occt::RunGuarded(occt::EngineUse::Geometry,
                                [&] { return myFile.Load(std::move(bytes), name); });
    }

    acis::AcisFile myFile;
};

} // namespace

void RegisterAcisEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::ACIS, [] { return std::make_unique<AcisReaderEngine>(); });
    registry.SetWriter(Format::ACIS,
                       [] { return std::make_unique<mesh::ModelWriterEngine<acis::AcisWriter>>(); });
}

} // namespace internal
} // namespace cadex
