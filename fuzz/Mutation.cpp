#include "fuzz/Mutation.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

namespace Zemtar::Fuzz {

std::size_t Mutation::Below(std::size_t limit)
{
    return limit == 0 ? 0 : static_cast<std::size_t>(myRandom()) % limit;
}

std::string Mutation::Next()
{
    std::string bytes = mySeeds[Below(mySeeds.size())];
    for (std::size_t changes = std::size_t{1} << Below(4); changes > 0; --changes) {
        Damage(bytes);
    }
    bytes.resize(std::min(bytes.size(), myLongest));
    return bytes;
}

void Mutation::Damage(std::string& bytes)
{
    const std::size_t at = Below(bytes.size());
    const std::size_t length = std::min(1 + Below(64), bytes.size() - at);
    switch (Below(10)) {
    case 0:
    case 1:
        if (!bytes.empty()) {
            bytes[at] = static_cast<char>(bytes[at] ^ (1 << Below(8)));
        }
        break;
    case 2:
        if (!bytes.empty()) {
            bytes[at] = static_cast<char>(Below(256));
        }
        break;
    case 3:
        bytes.erase(at, length);
        break;
    case 4:
        bytes.insert(Below(bytes.size()), bytes.substr(at, length));
        break;
    case 5: { // a piece of another seed
        const std::string& other = mySeeds[Below(mySeeds.size())];
        const std::size_t from = Below(other.size());
        bytes.replace(at, length, other.substr(from, 1 + Below(200)));
        break;
    }
    case 6:
    case 7:
        ChangeNumber(bytes);
        break;
    case 8:
        WriteInteger(bytes);
        break;
    default:
        if (Below(4) == 0) {
            bytes.resize(at);
        }
    }
}

/// A number in a text becomes another of the text, or an odd one.
void Mutation::ChangeNumber(std::string& bytes)
{
    static constexpr const char* Digits = "0123456789";
    static constexpr const char* Odd[] = {"0",          "-1",      "1E308", "4294967296", "2147483648", "0.5",
                                          "9999999999", "1.E-300", "-0.",   "NaN",        "1e999",      "$"};
    const std::size_t at = bytes.find_first_of(Digits, Below(bytes.size()));
    if (at == std::string::npos) {
        return;
    }
    const std::size_t end = std::min(bytes.find_first_not_of("0123456789.eE+-", at), bytes.size());
    std::string number = Odd[Below(std::size(Odd))];
    const std::size_t other = bytes.find_first_of(Digits, Below(bytes.size()));
    if (other != std::string::npos && Below(2) == 0) {
        number = bytes.substr(other, std::min(bytes.find_first_not_of(Digits, other), bytes.size()) - other);
    }
    bytes.replace(at, end - at, number);
}

/// A binary integer of one to eight bytes in either order, at the edges of its range.
void Mutation::WriteInteger(std::string& bytes)
{
    static constexpr std::array<std::uint64_t, 9> Values = {
        0, 1, 0x7F, 0xFF, 0x7FFF, 0xFFFF, 0x7FFFFFFF, 0xFFFFFFFF, 0x7FFFFFFFFFFFFFFF};
    const std::size_t width = std::size_t{1} << Below(4);
    if (bytes.size() < width) {
        return;
    }
    const std::size_t at = Below(bytes.size() - width + 1);
    const std::uint64_t value = Values[Below(Values.size())] + Below(3) - 1;
    const bool isLittle = Below(2) == 0;
    for (std::size_t i = 0; i < width; ++i) {
        bytes[at + (isLittle ? i : width - 1 - i)] = static_cast<char>(value >> (8 * i));
    }
}

} // namespace Zemtar::Fuzz
