#include "sdk/step/StepEngines.h"

#include "sdk/step/StepReaderEngine.h"
#include "sdk/step/StepWriter.h"

namespace cadex {
namespace internal {

namespace {

class StepWriterEngine final : public WriterEngine
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
        return target.IsOpen() && step::StepWriter(target, myPlan, myOptions).Write() && target.Commit();
    }

    bool WriteStream(std::ostream& stream) override
    {
        text::StreamSink sink(stream);
        return step::StepWriter(sink, myPlan, myOptions).Write() && stream.flush();
    }

private:
    mesh::ExportPlan myPlan;
    mesh::ExportOptions myOptions;
};

} // namespace

void RegisterStepEngines(EngineRegistry& registry)
{
    registry.SetReader(Format::STEP, step::MakeStepEngine);
    registry.SetWriter(Format::STEP, [] { return std::make_unique<StepWriterEngine>(); });
}

} // namespace internal
} // namespace cadex
