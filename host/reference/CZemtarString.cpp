#include "host/CZemtarString.h"

#include "host/reference/Utf8.h"

#include <QChar>

#include <algorithm>
#include <ostream>
#include <stdexcept>
#include <string_view>

namespace Zemtar {
namespace {

#ifdef _WIN32
constexpr wchar_t SystemSeparator = L'\\';
#else
constexpr wchar_t SystemSeparator = L'/';
#endif

constexpr std::wstring_view Separators = L"/\\";

bool IsSeparator(wchar_t character)
{
    return Separators.find(character) != std::wstring_view::npos;
}

/// Gives the position of the last path component, which may be empty.
std::size_t LastComponent(std::wstring_view path)
{
    const std::size_t separator = path.find_last_of(Separators);
    return separator == std::wstring_view::npos ? 0 : separator + 1;
}

/// Gives the position of the dot before the extension, npos when the last component has none; "." and ".."
/// are folders.
std::size_t ExtensionDot(std::wstring_view path)
{
    const std::wstring_view name = path.substr(LastComponent(path));
    const std::size_t dot = name.rfind(L'.');
    if (dot == std::wstring_view::npos || name == L"." || name == L"..") {
        return std::wstring_view::npos;
    }
    return path.size() - name.size() + dot;
}

bool IsAbsolute(std::wstring_view path)
{
    const bool drive = path.size() > 2 && path[1] == L':' && IsSeparator(path[2]);
    return drive || (!path.empty() && IsSeparator(path.front()));
}

// The tables of Unicode stop at U+10FFFF; a wchar_t need not.
bool IsCodePoint(wchar_t character)
{
    return static_cast<char32_t>(character) <= QChar::LastValidCodePoint;
}

wchar_t Lower(wchar_t character)
{
    return IsCodePoint(character) ? static_cast<wchar_t>(QChar::toLower(static_cast<char32_t>(character)))
                                  : character;
}

wchar_t Folded(wchar_t character)
{
    return IsCodePoint(character)
               ? static_cast<wchar_t>(QChar::toCaseFolded(static_cast<char32_t>(character)))
               : character;
}

bool IsSpace(wchar_t character)
{
    return IsCodePoint(character) && QChar::isSpace(static_cast<char32_t>(character));
}

std::wstring FoldedText(std::wstring text)
{
    std::ranges::transform(text, text.begin(), Folded);
    return text;
}

int PositionOrNone(std::size_t position)
{
    return position == std::wstring::npos ? -1 : static_cast<int>(position);
}

/// Takes one step of a cd: into a folder, or up from where `path` leads.
void Step(std::wstring& path, std::wstring_view component)
{
    const std::size_t last = path.find_last_not_of(Separators);
    const bool atRoot = !path.empty() && last == std::wstring::npos;
    if (component.empty() || component == L"." || (component == L".." && atRoot)) {
        return;
    }
    const std::wstring_view here = std::wstring_view(path).substr(0, last + 1);
    const std::size_t name = LastComponent(here);
    if (component == L".." && !here.empty() && here.substr(name) != L"..") {
        path.resize(name > 1 ? name - 1 : name);
        return;
    }
    if (!path.empty() && !IsSeparator(path.back())) {
        path.push_back(SystemSeparator);
    }
    path.append(component);
}

} // namespace

CZemtarString::CZemtarString() = default;
CZemtarString::CZemtarString(const CZemtarString& other) : m_text(other.m_text) {}
CZemtarString::CZemtarString(CZemtarString&& other) noexcept = default;
CZemtarString::CZemtarString(const char* utf8) : m_text(utf8 != nullptr ? DecodeUtf8(utf8) : std::wstring())
{
}
CZemtarString::CZemtarString(const wchar_t* text) : m_text(text != nullptr ? text : L"") {}
CZemtarString::CZemtarString(const std::string& utf8) : m_text(DecodeUtf8(utf8)) {}
CZemtarString::CZemtarString(const std::wstring& text) : m_text(text) {}
CZemtarString::CZemtarString(std::wstring&& text) noexcept : m_text(std::move(text)) {}
CZemtarString::CZemtarString(int number) : m_text(std::to_wstring(number)) {}
CZemtarString::~CZemtarString() = default;

CZemtarString& CZemtarString::operator=(const CZemtarString& other)
{
    m_text = other.m_text;
    return *this;
}

CZemtarString& CZemtarString::operator=(CZemtarString&& other) noexcept = default;

CZemtarString& CZemtarString::operator=(const wchar_t* text)
{
    return *this = CZemtarString(text);
}

CZemtarString& CZemtarString::operator=(const char* utf8)
{
    return *this = CZemtarString(utf8);
}

std::string CZemtarString::toStdString() const
{
    return EncodeUtf8(m_text);
}

std::wstring CZemtarString::toStdWString() const
{
    return m_text;
}

// Encoded anew each time, since characters can be overwritten behind our back; replaced only when it differs,
// so that pointers given out earlier stay valid.
CZemtarString::operator const char*() const
{
    std::string encoded = toStdString();
    if (!m_narrow) {
        m_narrow = std::make_unique<std::string>(std::move(encoded));
    } else if (*m_narrow != encoded) {
        *m_narrow = std::move(encoded);
    }
    return m_narrow->c_str();
}

CZemtarString::operator const wchar_t*() const
{
    return m_text.c_str();
}

CZemtarString::operator wchar_t*()
{
    return m_text.data();
}

CZemtarString CZemtarString::GetAnsiFileName() const
{
    return *this;
}

bool CZemtarString::HasUnicode() const
{
    return std::ranges::any_of(m_text, [](wchar_t c) { return static_cast<char32_t>(c) > 127; });
}

bool CZemtarString::operator==(const CZemtarString& other) const
{
    return m_text == other.m_text;
}

bool CZemtarString::operator==(const char* utf8) const
{
    return *this == CZemtarString(utf8);
}

bool CZemtarString::operator==(const wchar_t* text) const
{
    return m_text == (text != nullptr ? text : L"");
}

bool CZemtarString::operator!=(const CZemtarString& other) const
{
    return !(*this == other);
}

bool CZemtarString::operator!=(const char* utf8) const
{
    return !(*this == utf8);
}

bool CZemtarString::operator!=(const wchar_t* text) const
{
    return !(*this == text);
}

bool CZemtarString::operator<(const CZemtarString& other) const
{
    return m_text < other.m_text;
}

bool CZemtarString::IsEqualTo(const CZemtarString& other, bool caseSensitive) const
{
    if (caseSensitive) {
        return m_text == other.m_text;
    }
    return std::ranges::equal(m_text, other.m_text, {}, Folded, Folded);
}

CZemtarString CZemtarString::operator+(const CZemtarString& other) const
{
    CZemtarString sum(*this);
    sum += other;
    return sum;
}

CZemtarString& CZemtarString::operator+=(const CZemtarString& other)
{
    m_text += other.m_text;
    return *this;
}

CZemtarString& CZemtarString::operator+=(const wchar_t* text)
{
    m_text += text != nullptr ? text : L"";
    return *this;
}

wchar_t CZemtarString::operator[](int index) const
{
    return index >= 0 && index < Length() ? m_text[static_cast<std::size_t>(index)] : L'\0';
}

wchar_t& CZemtarString::operator[](int index)
{
    if (index < 0 || index >= Length()) {
        throw std::out_of_range("CZemtarString: index outside the text");
    }
    return m_text[static_cast<std::size_t>(index)];
}

CZemtarString& CZemtarString::ToLower()
{
    std::ranges::transform(m_text, m_text.begin(), Lower);
    return *this;
}

CZemtarString& CZemtarString::Trim()
{
    const auto end = std::find_if_not(m_text.rbegin(), m_text.rend(), IsSpace).base();
    m_text.erase(end, m_text.end());
    m_text.erase(m_text.begin(), std::ranges::find_if_not(m_text, IsSpace));
    return *this;
}

CZemtarString& CZemtarString::TruncateAfter(int length)
{
    m_text.resize(static_cast<std::size_t>(std::clamp(length, 0, Length())));
    return *this;
}

CZemtarString& CZemtarString::Replace(const CZemtarString& what, const CZemtarString& with)
{
    std::size_t found = what.IsEmpty() ? std::wstring::npos : m_text.find(what.m_text);
    if (found == std::wstring::npos) {
        return *this;
    }
    std::wstring result;
    std::size_t position = 0;
    for (; found != std::wstring::npos; found = m_text.find(what.m_text, position)) {
        result.append(m_text, position, found - position).append(with.m_text);
        position = found + what.m_text.size();
    }
    result.append(m_text, position);
    m_text = std::move(result);
    return *this;
}

int CZemtarString::Find(const CZemtarString& what) const
{
    return PositionOrNone(m_text.find(what.m_text));
}

int CZemtarString::Find(wchar_t character) const
{
    return PositionOrNone(m_text.find(character));
}

bool CZemtarString::Contains(const CZemtarString& what, bool caseSensitive) const
{
    if (caseSensitive) {
        return Find(what) >= 0;
    }
    return FoldedText(m_text).find(FoldedText(what.m_text)) != std::wstring::npos;
}

CZemtarString CZemtarString::Extension() const
{
    const std::size_t dot = ExtensionDot(m_text);
    return dot == std::wstring::npos ? CZemtarString() : CZemtarString(m_text.substr(dot + 1));
}

CZemtarString& CZemtarString::RemoveExt()
{
    const std::size_t dot = ExtensionDot(m_text);
    if (dot != std::wstring::npos) {
        m_text.resize(dot);
    }
    return *this;
}

CZemtarString& CZemtarString::RemovePath()
{
    m_text.erase(0, LastComponent(m_text));
    return *this;
}

CZemtarString CZemtarString::Path(wchar_t separator) const
{
    const std::size_t last = m_text.rfind(separator);
    return last == std::wstring::npos ? CZemtarString()
                                      : CZemtarString(m_text.substr(0, std::max<std::size_t>(last, 1)));
}

CZemtarString& CZemtarString::SetPath(const CZemtarString& folder, wchar_t separator)
{
    std::wstring path = folder.m_text;
    if (!path.empty() && !IsSeparator(path.back())) {
        path.push_back(separator);
    }
    RemovePath();
    m_text.insert(0, path);
    return *this;
}

CZemtarString& CZemtarString::ReplaceExtension(const wchar_t* extension)
{
    const std::wstring_view text = extension != nullptr ? extension : L"";
    const std::wstring bare(text.substr(text.starts_with(L'.') ? 1 : 0));
    RemoveExt();
    if (!bare.empty()) {
        m_text.append(L".").append(bare);
    }
    return *this;
}

CZemtarString& CZemtarString::ReplaceSlashWithSystemSlash()
{
    std::ranges::replace_if(m_text, IsSeparator, SystemSeparator);
    return *this;
}

CZemtarString& CZemtarString::CD(const CZemtarString& folder)
{
    if (IsAbsolute(folder.m_text)) {
        m_text = folder.m_text;
        return *this;
    }
    const std::wstring steps = folder.m_text;
    for (std::size_t begin = 0; begin <= steps.size();) {
        const std::size_t end = std::min(steps.find_first_of(Separators, begin), steps.size());
        Step(m_text, std::wstring_view(steps).substr(begin, end - begin));
        begin = end + 1;
    }
    return *this;
}

std::ostream& operator<<(std::ostream& stream, const CZemtarString& text)
{
    return stream << text.toStdString();
}

} // namespace Zemtar
