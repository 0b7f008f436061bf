#include "sdk/rhino/RhinoEngines.h"

#include <iterator>

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

class RhinoWriterEngine final : public WriterEngine
{
public:
    bool Transfer(const ModelData_Model& model, const Base_WriterParameters& parameters) override
    {
        myOptions.unit = parameters.LengthUnit();
        return myPlan.Build(model);
    }

    bool WriteFile(const std::filesystem::path& file) override
    {
        text::AtomicFile target(file);
        return target.IsOpen() && rhino::RhinoWriter(target, myPlan, myOptions).Write() && target.Commit();
    }

    bool WriteStream(std::ostream& stream) override
    {
        text::StreamSink sink(stream);
        return rhino::RhinoWriter(sink, myPlan, myOptions).Write() && stream.flush();
    }

private:
    mesh::ExportPlan myPlan;
    mesh::ExportOptions myOptions;
};

} // namespace

void RegisterRhinoEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::Rhino, [] { return std::make_unique<RhinoReaderEngine>(); });
    registry.SetWriter(Format::Rhino, [] { return std::make_unique<RhinoWriterEngine>(); });
}

} // namespace internal
} // namespace cadex
