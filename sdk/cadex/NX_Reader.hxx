// Reader of NX files; see Base_Reader.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Reader.hxx>
#include <cadex/NX_ReaderParameters.hxx>

namespace cadex {

class CADEX_EXPORT NX_Reader : public Base_Reader
{
public:
    NX_Reader() : Base_Reader(internal::Format::NX) {}

    const NX_ReaderParameters& Parameters() const { return myParameters; }
    NX_ReaderParameters& Parameters() { return myParameters; }

private:
    const Base_ReaderParameters& BaseParameters() const override { return myParameters; }

    NX_ReaderParameters myParameters;
};

} // namespace cadex
