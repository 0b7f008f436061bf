// Reader of ACIS files; see Base_Reader.
#pragma once

#include <cadex/ACIS_ReaderParameters.hxx>
#include <cadex/Base_Export.hxx>
#include <cadex/Base_Reader.hxx>

namespace cadex {

class CADEX_EXPORT ACIS_Reader : public Base_Reader
{
public:
    ACIS_Reader() : Base_Reader(internal::Format::ACIS) {}

    const ACIS_ReaderParameters& Parameters() const { return myParameters; }
    ACIS_ReaderParameters& Parameters() { return myParameters; }

private:
    const Base_ReaderParameters& BaseParameters() const override { return myParameters; }

    ACIS_ReaderParameters myParameters;
};

} // namespace cadex
