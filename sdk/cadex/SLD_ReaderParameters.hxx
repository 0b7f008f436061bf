// Parameters of SLD_Reader; it has none of its own.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_ReaderParameters.hxx>

namespace cadex {

class CADEX_EXPORT SLD_ReaderParameters : public Base_ReaderParameters
{
public:
    SLD_ReaderParameters() = default;
};

} // namespace cadex
