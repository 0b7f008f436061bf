#include "sdk/solidworks/SldXml.h"

#include <charconv>

#include <cadex/internal/Utf.hxx>

#include "sdk/solidworks/SldBytes.h"

namespace cadex::solidworks {

namespace {

constexpr std::string_view Blanks = " \t\r\n";

/// &amp; and the like, and characters by number; anything else stays as it stands.
std::string Decode(std::string_view raw)
{
    static constexpr std::pair<std::string_view, char> Named[] = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    std::string result;
    result.reserve(raw.size());
    while (!raw.empty()) {
        const std::size_t end = raw[0] == '&' ? raw.find(';') : std::string_view::npos;
        const std::string_view name =
            end == std::string_view::npos ? std::string_view() : raw.substr(1, end - 1);
        std::string character;
        for (const auto& [known, c] : Named) {
            if (name == known) {
                character = c;
            }
        }
        if (name.size() > 1 && name[0] == '#') {
            const bool isHex = name[1] == 'x' || name[1] == 'X';
            const std::string_view digits = name.substr(isHex ? 2 : 1);
            std::uint32_t code = 0;
            const auto [stop, error] =
                std::from_chars(digits.data(), digits.data() + digits.size(), code, isHex ? 16 : 10);
            if (error == std::errc() && stop == digits.data() + digits.size() &&
                code < internal::UnicodeEnd) {
                internal::AppendUtf8(character, static_cast<char32_t>(code));
            }
        }
        if (character.empty()) {
            result += raw[0];
            raw.remove_prefix(1);
        } else {
            result += character;
            raw.remove_prefix(end + 1);
        }
    }
    return result;
}

std::string_view Trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(Blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

/// The attributes of a tag: name="value" with either quotation mark.
void ReadAttributes(std::string_view tag, XmlElement& element)
{
    for (;;) {
        const std::size_t equals = tag.find('=');
        if (equals == std::string_view::npos) {
            return;
        }
        const std::string_view name = Trimmed(tag.substr(0, equals));
        const std::size_t open = tag.find_first_of("\"'", equals);
        const std::size_t close = open == std::string_view::npos ? open : tag.find(tag[open], open + 1);
        if (close == std::string_view::npos) {
            return;
        }
        element.attributes.emplace_back(name, Decode(tag.substr(open + 1, close - open - 1)));
        tag.remove_prefix(close + 1);
    }
}

/// Where the tag ends that begins there; marks within quotation marks do not count.
std::size_t EndOfTag(std::string_view text, std::size_t at)
{
    char quote = 0;
    for (; at < text.size(); ++at) {
        const char c = text[at];
        if (quote != 0) {
            quote = c == quote ? char{0} : quote;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '>') {
            return at;
        }
    }
    return std::string_view::npos;
}

std::vector<XmlElement> ReadUtf8(std::string_view text)
{
    std::vector<XmlElement> elements;
    std::vector<std::size_t> open;
    std::size_t at = text.find('<');
    while (at != std::string_view::npos) {
        if (text.substr(at, 4) == "<!--") {
            at = text.find("-->", at);
        }
        const std::size_t end = EndOfTag(text, at);
        if (at == std::string_view::npos || end == std::string_view::npos) {
            break;
        }
        std::string_view tag = text.substr(at + 1, end - at - 1);
        if (tag.empty()) {
            break;
        }
        if (tag[0] == '/') {
            if (open.empty()) {
                break;
            }
            open.pop_back();
        } else if (tag[0] != '?' && tag[0] != '!') {
            const bool isWhole = tag.back() == '/';
            tag.remove_suffix(isWhole ? 1 : 0);
            XmlElement& element = elements.emplace_back();
            const std::size_t nameEnd = std::min(tag.find_first_of(Blanks), tag.size());
            element.name = tag.substr(0, nameEnd);
            element.depth = static_cast<int>(open.size());
            ReadAttributes(tag.substr(nameEnd), element);
            if (!isWhole) {
                open.push_back(elements.size() - 1);
            }
        }
        at = text.find('<', end);
        if (!open.empty() && at != std::string_view::npos) {
            elements[open.back()].text += Decode(Trimmed(text.substr(end + 1, at - end - 1)));
        }
    }
    return elements;
}

} // namespace

std::string_view XmlElement::Of(std::string_view attribute) const
{
    for (const auto& [key, value] : attributes) {
        if (key == attribute) {
            return value;
        }
    }
    return {};
}

std::vector<XmlElement> ReadXml(std::string_view bytes)
{
    if (bytes.substr(0, 2) == "\xff\xfe") {
        return ReadUtf8(Utf16At(bytes, 2, (bytes.size() - 2) / 2).ToUTF8());
    }
    return ReadUtf8(bytes);
}

} // namespace cadex::solidworks
