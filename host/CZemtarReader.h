#pragma once

#include "host/CZemtarString.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

class CZemtarDocument;

/// Base of importer plug-ins. Has no virtual destructor: the host never deletes an importer through this
/// class.
class ZEMTAR_CORE_EXPORT CZemtarReader
{
public:
    CZemtarReader();

    /// Reads a file into a new document, which the caller owns; null on failure.
    virtual CZemtarDocument* Import(CZemtarString fileName) = 0;

protected:
    ~CZemtarReader() = default;
};

} // namespace Zemtar
