// The writer engine of formats that are streamed from an export plan: STEP, IFC and 3DM differ in their
// writers alone.
//
//     registry.SetWriter(Format::STEP, [] { return std::make_unique<StreamedWriterEngine<StepWriter>>(); });
#pragma once

#include "sdk/mesh/ExportPlan.h"
#include "sdk/model/WriterEngine.h"
#include "sdk/text/AtomicFile.h"

namespace cadex::mesh {

/// `Writer` is made of a sink, the plan and the options, and its Write() gives false when the sink fails.
template <typename Writer>
class StreamedWriterEngine final : public internal::WriterEngine
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
        return target.IsOpen() && Writer(target, myPlan, myOptions).Write() && target.Commit();
    }

    bool WriteStream(std::ostream& stream) override
    {
        text::StreamSink sink(stream);
        return Writer(sink, myPlan, myOptions).Write() && stream.flush();
    }

private:
    ExportPlan myPlan;
    ExportOptions myOptions;
};

/// The same of formats whose writers walk the model themselves (ACIS, Parasolid): `Writer` is made of a sink,
/// the model and the unit of length.
template <typename Writer>
class ModelWriterEngine final : public internal::WriterEngine
{
public:
    bool Transfer(const ModelData_Model& model, const Base_WriterParameters& parameters) override
    {
        myModel = model;
        myUnit = parameters.LengthUnit();
        return ExportPlan().Build(model); // refuses what cannot be written
    }

    bool WriteFile(const std::filesystem::path& file) override
    {
        text::AtomicFile target(file);
        return target.IsOpen() && Writer(target, myModel, myUnit).Write() && target.Commit();
    }

    bool WriteStream(std::ostream& stream) override
    {
        text::StreamSink sink(stream);
        return Writer(sink, myModel, myUnit).Write() && stream.flush();
    }

private:
    ModelData_Model myModel;
    Base_LengthUnit myUnit = Base_LU_Millimeters;
};

} // namespace cadex::mesh
