#pragma once

#include "host/CZemtarFont.h"
#include "host/ZemtarCoreExport.h"

#include <vector>

namespace Zemtar {

/// The one place that knows which font families 3D text can be made of; filled at start-up, asked by text
/// tools.
class ZEMTAR_CORE_EXPORT CZemtar3DTextGeometryGenerator
{
public:
    /// Gives the process-wide object; the caller does not own it.
    static CZemtar3DTextGeometryGenerator* getInstance();

    /// Adds a family; one of the same name (letter case aside) is replaced.
    void RegisterFont(const CZemtarFont& font);
    /// Gives the families in the order in which their names were first registered.
    const std::vector<CZemtarFont>& Fonts() const { return m_fonts; }
    /// Gives the family of that name (letter case aside), or null; valid until the next `RegisterFont`.
    const CZemtarFont* FindFont(const CZemtarString& name) const;

private:
    CZemtar3DTextGeometryGenerator() = default;

    std::vector<CZemtarFont> m_fonts;
};

} // namespace Zemtar
