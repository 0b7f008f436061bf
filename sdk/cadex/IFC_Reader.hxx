// Reader of IFC files; see Base_Reader.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Reader.hxx>
#include <cadex/IFC_ReaderParameters.hxx>

namespace cadex {

class CADEX_EXPORT IFC_Reader : public Base_Reader
{
public:
    IFC_Reader() : Base_Reader(internal::Format::IFC) {}

    const IFC_ReaderParameters& Parameters() const { return myParameters; }
    IFC_ReaderParameters& Parameters() { return myParameters; }

private:
    const Base_ReaderParameters& BaseParameters() const override { return myParameters; }

    IFC_ReaderParameters myParameters;
};

} // namespace cadex
