#include "host/reference/Utf8.h"

#include <cstddef>

namespace Zemtar {
namespace {

constexpr wchar_t Replacement = 0xFFFD;

/// What a lead byte says of its sequence: how many bytes follow, and the range of the first of those, which
/// rules out overlong forms, surrogates and values above U+10FFFF. `following` is 0 for a byte that leads
/// nothing.
struct Lead
{
    unsigned following = 0;
    unsigned lowest = 0x80;
    unsigned highest = 0xBF;
};

Lead LeadOf(unsigned byte)
{
    if (byte >= 0xC2 && byte <= 0xDF) {
        return {1};
    }
    if (byte >= 0xE0 && byte <= 0xEF) {
        return {2, byte == 0xE0 ? 0xA0U : 0x80U, byte == 0xED ? 0x9FU : 0xBFU};
    }
    if (byte >= 0xF0 && byte <= 0xF4) {
        return {3, byte == 0xF0 ? 0x90U : 0x80U, byte == 0xF4 ? 0x8FU : 0xBFU};
    }
    return {};
}

/// Decodes one sequence that begins with a byte above ASCII, and moves `position` behind what it took.
wchar_t DecodeSequence(std::string_view bytes, std::size_t& position)
{
    const unsigned first = static_cast<unsigned char>(bytes[position++]);
    const Lead lead = LeadOf(first);
    if (lead.following == 0) {
        return Replacement;
    }
    unsigned value = first & (0x3FU >> lead.following);
    for (unsigned i = 0; i < lead.following; ++i) {
        const unsigned next = position < bytes.size() ? static_cast<unsigned char>(bytes[position]) : 0U;
        if (next < (i == 0 ? lead.lowest : 0x80U) || next > (i == 0 ? lead.highest : 0xBFU)) {
            return Replacement;
        }
        value = value << 6 | (next & 0x3FU);
        ++position;
    }
    return static_cast<wchar_t>(value);
}

void AppendEncoded(std::string& bytes, char32_t value)
{
    const auto append = [&bytes](unsigned byte) { bytes.push_back(static_cast<char>(byte)); };
    if (value < 0x800) {
        append(0xC0U | value >> 6);
    } else if (value < 0x10000) {
        append(0xE0U | value >> 12);
        append(0x80U | (value >> 6 & 0x3FU));
    } else {
        append(0xF0U | value >> 18);
        append(0x80U | (value >> 12 & 0x3FU));
        append(0x80U | (value >> 6 & 0x3FU));
    }
    append(0x80U | (value & 0x3FU));
}

bool IsScalar(char32_t value)
{
    return value < 0xD800 || (value > 0xDFFF && value <= 0x10FFFF);
}

} // namespace

std::wstring DecodeUtf8(std::string_view bytes)
{
    std::wstring text;
    text.reserve(bytes.size());
    for (std::size_t position = 0; position < bytes.size();) {
        const auto byte = static_cast<unsigned char>(bytes[position]);
        if (byte < 0x80) {
            text.push_back(byte);
            ++position;
        } else {
            text.push_back(DecodeSequence(bytes, position));
        }
    }
    return text;
}

std::string EncodeUtf8(std::wstring_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (const wchar_t character : text) {
        const auto value = static_cast<char32_t>(character);
        if (value < 0x80) {
            bytes.push_back(static_cast<char>(value));
        } else {
            AppendEncoded(bytes, IsScalar(value) ? value : static_cast<char32_t>(Replacement));
        }
    }
    return bytes;
}

} // namespace Zemtar
