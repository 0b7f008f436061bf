// Writer of Rhino files; see Base_Writer.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Writer.hxx>
#include <cadex/Rhino_WriterParameters.hxx>

namespace cadex {

class CADEX_EXPORT Rhino_Writer : public Base_Writer
{
public:
    Rhino_Writer() : Base_Writer(internal::Format::Rhino) {}

    const Rhino_WriterParameters& Parameters() const { return myParameters; }
    Rhino_WriterParameters& Parameters() { return myParameters; }

private:
    const Base_WriterParameters& BaseParameters() const override { return myParameters; }

    Rhino_WriterParameters myParameters;
};

} // namespace cadex
