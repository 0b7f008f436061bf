// Base of every reader's parameters; nothing in it is set by applications.
#pragma once

#include <cadex/Base_Export.hxx>

namespace cadex {

class CADEX_EXPORT Base_ReaderParameters
{
public:
    virtual ~Base_ReaderParameters() = default;

protected:
    Base_ReaderParameters() = default;
    Base_ReaderParameters(const Base_ReaderParameters&) = default;
    Base_ReaderParameters& operator=(const Base_ReaderParameters&) = default;
};

} // namespace cadex
