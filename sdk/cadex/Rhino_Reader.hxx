// Reader of Rhino files; see Base_Reader.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Reader.hxx>
#include <cadex/Rhino_ReaderParameters.hxx>

namespace cadex {

class CADEX_EXPORT Rhino_Reader : public Base_Reader
{
public:
    Rhino_Reader() : Base_Reader(internal::Format::Rhino) {}

    const Rhino_ReaderParameters& Parameters() const { return myParameters; }
    Rhino_ReaderParameters& Parameters() { return myParameters; }

private:
    const Base_ReaderParameters& BaseParameters() const override { return myParameters; }

    Rhino_ReaderParameters myParameters;
};

} // namespace cadex
