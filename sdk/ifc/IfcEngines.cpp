#include "sdk/ifc/IfcEngines.h"

#include <iterator>

#include "sdk/ifc/IfcTree.h"
#include "sdk/ifc/IfcWriter.h"
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

class IfcWriterEngine final : public WriterEngine
{
public:
    bool Transfer(const ModelData_Model& model, const Base_WriterParameters& parameters) override
    {
        myOptions.unit = parameters.LengthUnit();
        myOptions.author = parameters.Author();
        myOptions.organization = parameters.Organization();
        myOptions.originatingSystem = parameters.OriginatingSystem();
        return myPlan.Build(model);
    }

    bool WriteFile(const std::filesystem::path& file) override
    {
        const std::u8string name = file.filename().u8string();
        myOptions.fileName = reinterpret_cast<const char*>(name.c_str());
        text::AtomicFile target(file);
        return target.IsOpen() && ifc::IfcWriter(target, myPlan, myOptions).Write() && target.Commit();
    }

    bool WriteStream(std::ostream& stream) override
    {
        text::StreamSink sink(stream);
        return ifc::IfcWriter(sink, myPlan, myOptions).Write() && stream.flush();
    }

private:
    mesh::ExportPlan myPlan;
    mesh::ExportOptions myOptions;
};

} // namespace

void RegisterIfcEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::IFC, [] { return std::make_unique<IfcReaderEngine>(); });
    registry.SetWriter(Format::IFC, [] { return std::make_unique<IfcWriterEngine>(); });
}

} // namespace internal
} // namespace cadex
