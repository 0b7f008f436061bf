#pragma once

#include "host/ZemtarCoreExport.h"

#include <iosfwd>
#include <memory>
#include <string>

namespace Zemtar {

/// The host's text: a sequence of 32-bit code points with file-name operations; every name, path and message
/// that crosses the host's border is one.
///
///     CZemtarString name("/models/engine.step");
///     name.RemoveExt();
///     name.RemovePath();                       // "engine"
///     std::FILE* file = std::fopen(name, "rb");  // UTF-8, through operator const char*
///
/// Narrow text is UTF-8 on both sides; malformed bytes become U+FFFD, so no input is refused. Wide text is
/// taken and given as it stands. Editing operations change the string in place and return it, so that they
/// chain. Positions count code points from 0. In paths "/" and "\" both separate, on every platform, unless
/// an operation names its separator.
class ZEMTAR_CORE_EXPORT CZemtarString
{
public:
    static_assert(sizeof(wchar_t) == 4, "CZemtarString holds 32-bit code points");

    CZemtarString();
    CZemtarString(const CZemtarString& other);
    CZemtarString(CZemtarString&& other) noexcept;
    /// Takes UTF-8; null gives the empty string.
    CZemtarString(const char* utf8);
    /// Takes code points up to the terminating 0; null gives the empty string.
    CZemtarString(const wchar_t* text);
    CZemtarString(const std::string& utf8);
    CZemtarString(const std::wstring& text);
    CZemtarString(std::wstring&& text) noexcept;
    /// Gives the number's decimal text.
    CZemtarString(int number);
    /// A character is not a number: without these, 'a' would silently become "97".
    CZemtarString(char) = delete;
    CZemtarString(wchar_t) = delete;
    ~CZemtarString();

    CZemtarString& operator=(const CZemtarString& other);
    CZemtarString& operator=(CZemtarString&& other) noexcept;
    CZemtarString& operator=(const wchar_t* text);
    CZemtarString& operator=(const char* utf8);

    // Conversion

    /// Gives UTF-8. A value that is no Unicode scalar (a lone surrogate, anything above U+10FFFF) is written
    /// as U+FFFD.
    std::string toStdString() const;
    std::wstring toStdWString() const;
    /// Gives UTF-8 that stays valid, at one address, until the text changes or the string ends.
    operator const char*() const;
    /// Gives the code points, ended by 0, valid until the text changes or the string ends.
    operator const wchar_t*() const;
    /// As above; the caller may overwrite characters, but not the terminating 0.
    operator wchar_t*();
    /// Gives the form of a file name that the system's narrow file functions take. Where those take UTF-8, as
    /// on Linux and macOS, that is the name itself.
    CZemtarString GetAnsiFileName() const;
    /// Tells whether a character lies outside ASCII.
    bool HasUnicode() const;

    // Comparison: by code point, without regard to locale, except where a flag asks for case folding.

    bool operator==(const CZemtarString& other) const;
    bool operator==(const char* utf8) const;
    bool operator==(const wchar_t* text) const;
    bool operator!=(const CZemtarString& other) const;
    bool operator!=(const char* utf8) const;
    bool operator!=(const wchar_t* text) const;
    /// A total order: code points compared one by one, a prefix before the longer text.
    bool operator<(const CZemtarString& other) const;
    /// Compares exactly, or after simple Unicode case folding.
    bool IsEqualTo(const CZemtarString& other, bool caseSensitive) const;
    bool IsEmpty() const { return m_text.empty(); }

    // Editing

    CZemtarString operator+(const CZemtarString& other) const;
    CZemtarString& operator+=(const CZemtarString& other);
    CZemtarString& operator+=(const wchar_t* text);
    /// Gives the character at `index`; 0 outside the text.
    wchar_t operator[](int index) const;
    /// As above, for writing; throws std::out_of_range outside the text.
    wchar_t& operator[](int index);
    int Length() const { return static_cast<int>(m_text.size()); }
    CZemtarString& ToLower();
    /// Removes white space, as Unicode defines it, at both ends.
    CZemtarString& Trim();
    /// Keeps the first `length` characters; a length beyond the end keeps all, a negative one nothing.
    CZemtarString& TruncateAfter(int length);
    /// Replaces every occurrence from left to right; what was put in is not searched again. An empty `what`
    /// changes nothing.
    CZemtarString& Replace(const CZemtarString& what, const CZemtarString& with);
    /// Gives the position of the first occurrence, -1 when there is none; the empty text is found at 0.
    int Find(const CZemtarString& what) const;
    int Find(wchar_t character) const;
    bool Contains(const CZemtarString& what, bool caseSensitive) const;

    // File names

    /// Gives the text after the last dot of the last path component, without the dot; empty when there is
    /// none. A name that begins with its only dot (".obj") is all extension.
    CZemtarString Extension() const;
    /// Removes the extension and its dot.
    CZemtarString& RemoveExt();
    /// Removes the folder part; what follows the last separator stays.
    CZemtarString& RemovePath();
    /// Gives the folder part: the text before the last `separator`, without it, except that the root keeps
    /// its one. Empty when there is no separator.
    CZemtarString Path(wchar_t separator) const;
    /// Puts the name, freed of its own folder part, into `folder`; `separator` goes between unless `folder`
    /// is empty or ends in a separator.
    CZemtarString& SetPath(const CZemtarString& folder, wchar_t separator);
    /// Replaces the extension, or adds one; `extension` comes with or without its dot. An empty one removes
    /// it.
    CZemtarString& ReplaceExtension(const wchar_t* extension);
    /// Turns every separator into the system's.
    CZemtarString& ReplaceSlashWithSystemSlash();
    /// Steps into `folder`, as a shell's cd does, component by component: ".." leads to the parent, "."
    /// nowhere, any other one is appended after one system separator. An absolute path replaces all. No
    /// trailing separator is added.
    CZemtarString& CD(const CZemtarString& folder);

    friend CZemtarString operator+(const char* utf8, const CZemtarString& text)
    {
        return CZemtarString(utf8) + text;
    }
    friend CZemtarString operator+(const wchar_t* left, const CZemtarString& text)
    {
        return CZemtarString(left) + text;
    }
    /// Writes UTF-8.
    friend ZEMTAR_CORE_EXPORT std::ostream& operator<<(std::ostream& stream, const CZemtarString& text);

private:
    std::wstring m_text;
    mutable std::unique_ptr<std::string> m_narrow; ///< what operator const char* last gave out
};

} // namespace Zemtar
