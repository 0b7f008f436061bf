#include "sdk/ifc/IfcEngines.h"

#include <fstream>
#include <iterator>

#include "sdk/ifc/IfcTree.h"
#include "sdk/occt/EngineScope.h"

namespace cadex {
namespace internal {
namespace {

class IfcReaderEngine final : public ReaderEngine
{
public:
    bool ReadFile(const std::filesystem::path& path, const Base_ReaderParameters&) override
    {
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(path, error);
        std::ifstream stream(path, std::ios::binary);
        if (error || !stream) {
            return false;
        }
        std::string text(static_cast<std::size_t>(size), '\0');
        stream.read(text.data(), static_cast<std::streamsize>(size));
        return stream.gcount() == static_cast<std::streamsize>(size) && myFile.Load(std::move(text));
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
}

} // namespace internal
} // namespace cadex
