#pragma once

#include "host/CZemtarString.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// A font family: its name and the font file of each style. A style without a file is empty.
class ZEMTAR_CORE_EXPORT CZemtarFont
{
public:
    void SetFontName(const CZemtarString& name) { m_name = name; }
    void SetFontFileNormal(const CZemtarString& file) { m_normal = file; }
    void SetFontFileBold(const CZemtarString& file) { m_bold = file; }
    void SetFontFileItalic(const CZemtarString& file) { m_italic = file; }
    void SetFontFileBoldItalic(const CZemtarString& file) { m_boldItalic = file; }

    const CZemtarString& FontName() const { return m_name; }
    const CZemtarString& FontFileNormal() const { return m_normal; }
    const CZemtarString& FontFileBold() const { return m_bold; }
    const CZemtarString& FontFileItalic() const { return m_italic; }
    const CZemtarString& FontFileBoldItalic() const { return m_boldItalic; }

    /// These tell whether the family has a file of the style.
    bool IsBold() const { return !m_bold.IsEmpty(); }
    bool IsItalic() const { return !m_italic.IsEmpty(); }
    bool IsBoldItalic() const { return !m_boldItalic.IsEmpty(); }

private:
    CZemtarString m_name;
    CZemtarString m_normal;
    CZemtarString m_bold;
    CZemtarString m_italic;
    CZemtarString m_boldItalic;
};

} // namespace Zemtar
