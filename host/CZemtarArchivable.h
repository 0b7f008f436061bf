#pragma once

#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// Base of all that a document archives.
class ZEMTAR_CORE_EXPORT CZemtarArchivable
{
public:
    virtual ~CZemtarArchivable() = default;

    /// Gives the name that the class has in archives: ASCII, fixed for ever.
    virtual const char* ArchiveName() const = 0;

protected:
    CZemtarArchivable() = default;
    CZemtarArchivable(const CZemtarArchivable&) = default;
    CZemtarArchivable& operator=(const CZemtarArchivable&) = default;
};

} // namespace Zemtar
