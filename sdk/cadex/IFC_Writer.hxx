// Writer of IFC files; see Base_Writer.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Writer.hxx>
#include <cadex/IFC_WriterParameters.hxx>

namespace cadex {

class CADEX_EXPORT IFC_Writer : public Base_Writer
{
public:
    IFC_Writer() : Base_Writer(internal::Format::IFC) {}

    const IFC_WriterParameters& Parameters() const { return myParameters; }
    IFC_WriterParameters& Parameters() { return myParameters; }

private:
    const Base_WriterParameters& BaseParameters() const override { return myParameters; }

    IFC_WriterParameters myParameters;
};

} // namespace cadex
