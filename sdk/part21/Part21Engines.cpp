#include "sdk/part21/Part21Engines.h"

#include "sdk/part21/StepWriter.h"

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
        AtomicFile target(file);
        return target.IsOpen() && StepWriter(target, myPlan, myOptions).Write() && target.Commit();
    }

    bool WriteStream(std::ostream& stream) override
    {
        StreamSink sink(stream);
        return StepWriter(sink, myPlan, myOptions).Write() && stream.flush();
    }

private:
    StepPlan myPlan;
    StepOptions myOptions;
};

} // namespace

void RegisterPart21Engines(EngineRegistry& registry)
{
    registry.SetWriter(Format::STEP, [] { return std::make_unique<StepWriterEngine>(); });
}

} // namespace internal
} // namespace cadex
