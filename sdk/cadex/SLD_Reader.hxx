// Reader of SolidWorks files; see Base_Reader.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Reader.hxx>
#include <cadex/SLD_ReaderParameters.hxx>

namespace cadex {

class CADEX_EXPORT SLD_Reader : public Base_Reader
{
public:
    SLD_Reader() : Base_Reader(internal::Format::SolidWorks) {}

    const SLD_ReaderParameters& Parameters() const { return myParameters; }
    SLD_ReaderParameters& Parameters() { return myParameters; }

private:
    const Base_ReaderParameters& BaseParameters() const override { return myParameters; }

    SLD_ReaderParameters myParameters;
};

} // namespace cadex
