// Writer of STEP files; see Base_Writer.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Writer.hxx>
#include <cadex/STEP_WriterParameters.hxx>

namespace cadex {

class CADEX_EXPORT STEP_Writer : public Base_Writer
{
public:
    STEP_Writer() : Base_Writer(internal::Format::STEP) {}

    const STEP_WriterParameters& Parameters() const { return myParameters; }
    STEP_WriterParameters& Parameters() { return myParameters; }

private:
    const Base_WriterParameters& BaseParameters() const override { return myParameters; }

    STEP_WriterParameters myParameters;
};

} // namespace cadex
