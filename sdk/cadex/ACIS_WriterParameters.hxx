// Parameters of ACIS_Writer; it has none of its own.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_WriterParameters.hxx>

namespace cadex {

class CADEX_EXPORT ACIS_WriterParameters : public Base_WriterParameters
{
public:
    ACIS_WriterParameters() = default;
};

} // namespace cadex
