// Geometry of a STEP file through OpenCASCADE.
#pragma once

#include <memory>

#include <cadex/STEP_ReaderParameters.hxx>

#include "sdk/step/StepModelBuilder.h"

namespace cadex::step {

/// Use it under the engine's guard (RunGuarded) only. Reading a file and making its shapes are two steps;
/// between them the file is in memory as records of the kernel.
class StepKernel : public StepGeometry
{
public:
    StepKernel();
    ~StepKernel() override;

    /// Loads the text. False when the kernel cannot read it, or when it could not make sense of every record:
    /// from such a file it makes shapes out of null references.
    /// `content` is that of the text, and must outlive the kernel's use.
    bool Read(const ClearText& text, const StepContent& content);
    /// Makes the shapes of all products.
    bool Transfer(STEP_ReaderParameters::BRepRepresentationType preferred);

    StepBody Body(std::size_t product) override;
    ModelData_Transformation Placement(std::size_t instance) override;
    std::vector<StepBody> LooseBodies() override;

private:
    struct State;
    std::unique_ptr<State> myState;
};

} // namespace cadex::step
