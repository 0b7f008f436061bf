// Writer of IGES files; see Base_Writer.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Writer.hxx>
#include <cadex/IGES_WriterParameters.hxx>

namespace cadex {

class CADEX_EXPORT IGES_Writer : public Base_Writer
{
public:
    IGES_Writer() : Base_Writer(internal::Format::IGES) {}

    const IGES_WriterParameters& Parameters() const { return myParameters; }
    IGES_WriterParameters& Parameters() { return myParameters; }

private:
    const Base_WriterParameters& BaseParameters() const override { return myParameters; }

    IGES_WriterParameters myParameters;
};

} // namespace cadex
