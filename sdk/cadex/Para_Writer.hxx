// Writer of Parasolid files; see Base_Writer.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Writer.hxx>
#include <cadex/Para_WriterParameters.hxx>

namespace cadex {

class CADEX_EXPORT Para_Writer : public Base_Writer
{
public:
    Para_Writer() : Base_Writer(internal::Format::Parasolid) {}

    const Para_WriterParameters& Parameters() const { return myParameters; }
    Para_WriterParameters& Parameters() { return myParameters; }

private:
    const Base_WriterParameters& BaseParameters() const override { return myParameters; }

    Para_WriterParameters myParameters;
};

} // namespace cadex
