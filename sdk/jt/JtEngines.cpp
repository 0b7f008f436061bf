#include "sdk/jt/JtEngines.h"

#include <iterator>

#include "sdk/jt/JtTree.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/text/FileBytes.h"

namespace cadex {
namespace internal {
namespace {

class JtReaderEngine final : public ReaderEngine
{
public:
    bool ReadFile(const std::filesystem::path& file, const Base_ReaderParameters&) override
    {
        std::string bytes;
        return text::ReadBytes(file, bytes) &&
               Load(std::move(bytes), text::StemOf(file), std::filesystem::absolute(file).parent_path());
    }

    bool ReadStream(std::istream& stream, const Base_ReaderParameters&) override
    {
        std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        return !stream.bad() && Load(std::move(bytes), {}, {});
    }

    bool Transfer(ModelData_Model& model) override
    {
        myFile.Build(model);
        return true;
    }

private:
    bool Load(std::string bytes, const Base_UTF16String& name, const std::filesystem::path& folder)
    {
        return occt::RunGuarded(occt::EngineUse::Geometry,
                                [&] { return myFile.Load(std::move(bytes), name, folder); });
    }

    jt::JtFile myFile;
};

} // namespace

void RegisterJtEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::JT, [] { return std::make_unique<JtReaderEngine>(); });
}

} // namespace internal
} // namespace cadex
