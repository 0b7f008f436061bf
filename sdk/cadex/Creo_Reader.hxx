// Reader of Creo files; see Base_Reader.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_Reader.hxx>
#include <cadex/Creo_ReaderParameters.hxx>

namespace cadex {

class CADEX_EXPORT Creo_Reader : public Base_Reader
{
public:
    Creo_Reader() : Base_Reader(internal::Format::Creo) {}

    const Creo_ReaderParameters& Parameters() const { return myParameters; }
    Creo_ReaderParameters& Parameters() { return myParameters; }

private:
    const Base_ReaderParameters& BaseParameters() const override { return myParameters; }

    Creo_ReaderParameters myParameters;
};

} // namespace cadex
