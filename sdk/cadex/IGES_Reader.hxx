// Reader of IGES files; see Base_Reader.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Reader.hxx>
#include <cadex/IGES_ReaderParameters.hxx>

namespace cadex {

class CADEX_EXPORT IGES_Reader : public Base_Reader
{
public:
    IGES_Reader() : Base_Reader(internal::Format::IGES) {}

    const IGES_ReaderParameters& Parameters() const { return myParameters; }
    IGES_ReaderParameters& Parameters() { return myParameters; }

private:
    const Base_ReaderParameters& BaseParameters() const override { return myParameters; }

    IGES_ReaderParameters myParameters;
};

} // namespace cadex
