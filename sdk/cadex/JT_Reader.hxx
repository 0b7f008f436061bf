// Reader of JT files; see Base_Reader.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Reader.hxx>
#include <cadex/JT_ReaderParameters.hxx>

namespace cadex {

class CADEX_EXPORT JT_Reader : public Base_Reader
{
public:
    JT_Reader() : Base_Reader(internal::Format::JT) {}

    const JT_ReaderParameters& Parameters() const { return myParameters; }
    JT_ReaderParameters& Parameters() { return myParameters; }

private:
    const Base_ReaderParameters& BaseParameters() const override { return myParameters; }

    JT_ReaderParameters myParameters;
};

} // namespace cadex
