// Reader of STEP files; see Base_Reader.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Reader.hxx>
#include <cadex/STEP_ReaderParameters.hxx>

namespace cadex {

class CADEX_EXPORT STEP_Reader : public Base_Reader
{
public:
    STEP_Reader() : Base_Reader(internal::Format::STEP) {}

    const STEP_ReaderParameters& Parameters() const { return myParameters; }
    STEP_ReaderParameters& Parameters() { return myParameters; }

private:
    const Base_ReaderParameters& BaseParameters() const override { return myParameters; }

    STEP_ReaderParameters myParameters;
};

} // namespace cadex
