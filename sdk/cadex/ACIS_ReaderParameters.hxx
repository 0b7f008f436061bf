// Parameters of ACIS_Reader; it has none of its own.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_ReaderParameters.hxx>

namespace cadex {

class CADEX_EXPORT ACIS_ReaderParameters : public Base_ReaderParameters
{
public:
    ACIS_ReaderParameters() = default;
};

} // namespace cadex
