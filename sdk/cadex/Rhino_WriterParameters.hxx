// Parameters of Rhino_Writer; it has none of its own.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_WriterParameters.hxx>

namespace cadex {

class CADEX_EXPORT Rhino_WriterParameters : public Base_WriterParameters
{
public:
    Rhino_WriterParameters() = default;
};

} // namespace cadex
