// Parameters of Para_Writer; the format is always in metres, the length unit is not used.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_WriterParameters.hxx>

namespace cadex {

class CADEX_EXPORT Para_WriterParameters : public Base_WriterParameters
{
public:
    Para_WriterParameters() = default;
};

} // namespace cadex
