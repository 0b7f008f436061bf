#include "sdk/solidworks/SldBytes.h"

#include <vector>

namespace cadex::solidworks {

namespace {

constexpr std::string_view WrapperId("\x23\x1d\xd5\x71\xda\x81\x48\xa2\xa8\x58\x98\xb2\x1b\x89\xef\x99", 16);
constexpr std::size_t WrapperSize = 24;

} // namespace

Base_UTF16String Utf16At(std::string_view bytes, std::size_t at, std::size_t units)
{
    if (units == 0 || units > bytes.size() / 2 || !Has(bytes, at, units * 2)) {
        return {};
    }
    std::vector<UTF16> text(units);
    std::memcpy(text.data(), bytes.data() + at, units * 2);
    return {text.data(), units};
}

std::string Inflate(std::string_view packed, std::size_t size, text::Packing packing, std::size_t& budget)
{
    if (size > budget || !text::CanInflateTo(packed, size)) {
        throw Unreadable("a packed stream claims too much memory");
    }
    budget -= size;
    std::string result(size, '\0');
    if (!text::Inflate(packed, packing, result)) {
        throw Unreadable("a packed stream is damaged");
    }
    return result;
}

bool IsWrapped(std::string_view bytes)
{
    return bytes.size() >= WrapperSize && bytes.substr(0, WrapperId.size()) == WrapperId;
}

std::string Unwrap(std::string_view bytes, std::size_t& at, std::size_t& budget)
{
    if (!Has(bytes, at, WrapperSize) || !IsWrapped(bytes.substr(at))) {
        throw Unreadable("a wrapped stream is damaged");
    }
    const std::size_t size = ValueAt<std::uint32_t>(bytes, at + 16);
    const std::size_t packed = ValueAt<std::uint32_t>(bytes, at + 20);
    if (!Has(bytes, at + WrapperSize, packed)) {
        throw Unreadable("a wrapped stream ends too early");
    }
    const std::string_view data = bytes.substr(at + WrapperSize, packed);
    at += WrapperSize + packed;
    return size == 0 ? std::string() : Inflate(data, size, text::Packing::Zlib, budget);
}

} // namespace cadex::solidworks
