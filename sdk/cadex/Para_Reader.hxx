// Reader of Parasolid files; see Base_Reader.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Reader.hxx>
#include <cadex/Para_ReaderParameters.hxx>

namespace cadex {

class CADEX_EXPORT Para_Reader : public Base_Reader
{
public:
    Para_Reader() : Base_Reader(internal::Format::Parasolid) {}

    const Para_ReaderParameters& Parameters() const { return myParameters; }
    Para_ReaderParameters& Parameters() { return myParameters; }

private:
    const Base_ReaderParameters& BaseParameters() const override { return myParameters; }

    Para_ReaderParameters myParameters;
};

} // namespace cadex
