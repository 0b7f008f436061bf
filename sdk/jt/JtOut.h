// Bytes of a JT file that is written, little-endian, in the layouts of version 8.1.
//
//     Out out;
//     out.Begin(kind::Instance, BaseType::Node);        // an element
//     out.I32(id);
//     out.End();                                         // its length is put in front
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "sdk/jt/JtElements.h"

namespace cadex::jt {

class Out
{
public:
    const std::string& Bytes() const { return myBytes; }

    void U8(std::uint8_t value) { myBytes.push_back(static_cast<char>(value)); }
    void U16(std::uint16_t value) { Put(value); }
    void I16(std::int16_t value) { Put(static_cast<std::uint16_t>(value)); }
    void U32(std::uint32_t value) { Put(value); }
    void I32(std::int32_t value) { Put(static_cast<std::uint32_t>(value)); }
    void Count(std::size_t value) { Put(static_cast<std::uint32_t>(value)); }
    void F32(float value) { Put(std::bit_cast<std::uint32_t>(value)); }
    void Raw(std::string_view bytes) { myBytes += bytes; }

    void Id(const Guid& id)
    {
        for (const std::size_t at : {3U, 2U, 1U, 0U, 5U, 4U, 7U, 6U, 8U, 9U, 10U, 11U, 12U, 13U, 14U, 15U}) {
            U8(id.bytes[at]);
        }
    }
    void Text(const Base_UTF16String& text)
    {
        Count(text.Length());
        for (std::size_t i = 0; i < text.Length(); ++i) {
            U16(static_cast<std::uint16_t>(text.Data()[i]));
        }
    }

    void Begin(const Guid& kind, BaseType type)
    {
        myElement = myBytes.size();
        U32(0);
        Id(kind);
        U8(static_cast<std::uint8_t>(type));
    }
    void End()
    {
        const auto size = static_cast<std::uint32_t>(myBytes.size() - myElement - 4);
        for (std::size_t i = 0; i < 4; ++i) {
            myBytes[myElement + i] = static_cast<char>(size >> (8 * i) & 0xFF);
        }
    }
    /// Ends a list of elements.
    void EndList()
    {
        U32(16);
        Id(kind::End);
    }

private:
    template <typename T>
    void Put(T value)
    {
        for (std::size_t i = 0; i < sizeof(T); ++i) {
            U8(static_cast<std::uint8_t>(value >> (8 * i) & 0xFF));
        }
    }

    std::string myBytes;
    std::size_t myElement = 0;
};

} // namespace cadex::jt
