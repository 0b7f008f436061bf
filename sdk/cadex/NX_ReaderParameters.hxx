// Parameters of NX_Reader; it has none of its own.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_ReaderParameters.hxx>

namespace cadex {

class CADEX_EXPORT NX_ReaderParameters : public Base_ReaderParameters
{
public:
    NX_ReaderParameters() = default;
};

} // namespace cadex
