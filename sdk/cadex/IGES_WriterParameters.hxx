// Parameters of IGES_Writer; it has none of its own.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_WriterParameters.hxx>

namespace cadex {

class CADEX_EXPORT IGES_WriterParameters : public Base_WriterParameters
{
public:
    IGES_WriterParameters() = default;
};

} // namespace cadex
