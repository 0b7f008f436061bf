// Writer of JT files; see Base_Writer.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Writer.hxx>
#include <cadex/JT_WriterParameters.hxx>

namespace cadex {

class CADEX_EXPORT JT_Writer : public Base_Writer
{
public:
    JT_Writer() : Base_Writer(internal::Format::JT) {}

    const JT_WriterParameters& Parameters() const { return myParameters; }
    JT_WriterParameters& Parameters() { return myParameters; }

private:
    const Base_WriterParameters& BaseParameters() const override { return myParameters; }

    JT_WriterParameters myParameters;
};

} // namespace cadex
