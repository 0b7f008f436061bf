// Writer of ACIS files; see Base_Writer.
#pragma once

#include <cadex/ACIS_WriterParameters.hxx>
#include <cadex/Base_Export.hxx>
#include <cadex/Base_Writer.hxx>

namespace cadex {

class CADEX_EXPORT ACIS_Writer : public Base_Writer
{
public:
    ACIS_Writer() : Base_Writer(internal::Format::ACIS) {}

    const ACIS_WriterParameters& Parameters() const { return myParameters; }
    ACIS_WriterParameters& Parameters() { return myParameters; }

private:
    const Base_WriterParameters& BaseParameters() const override { return myParameters; }

    ACIS_WriterParameters myParameters;
};

} // namespace cadex
