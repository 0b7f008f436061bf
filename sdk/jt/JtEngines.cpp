#include "sdk/jt/JtEngines.h"

#include <iterator>

#include "sdk/jt/JtTree.h"
#include "sdk/jt/JtWriter.h"
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

class JtWriterEngine final : public WriterEngine
{
public:
    bool Transfer(const ModelData_Model& model, const Base_WriterParameters& parameters) override
    {
        const auto& own = static_cast<const JT_WriterParameters&>(parameters);
        if (!myPlan.Build(model)) {
            return false;
        }
        myUnit = own.PolyRepresentationUnit();
        mySplit = own.FileSplitMode();
        return true;
    }

    bool WriteFile(const std::filesystem::path& file) override
    {
        return jt::JtWriter(myPlan, myUnit, mySplit).WriteFiles(file);
    }

    bool WriteStream(std::ostream& stream) override
    {
        text::StreamSink sink(stream);
        return jt::JtWriter(myPlan, myUnit, mySplit).Write(sink) && stream.flush();
    }

private:
    mesh::ExportPlan myPlan;
    Base_LengthUnit myUnit = Base_LU_Millimeters;
    jt::JtWriter::Split mySplit = JT_WriterParameters::Monolithic;
};

} // namespace

void RegisterJtEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::JT, [] { return std::make_unique<JtReaderEngine>(); });
    registry.SetWriter(Format::JT, [] { return std::make_unique<JtWriterEngine>(); });
}

} // namespace internal
} // namespace cadex
