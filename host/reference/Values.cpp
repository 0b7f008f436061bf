// The small value classes: matrix, unit, UUID, texture.

#include "host/CZemtarMatrix.h"
#include "host/CZemtarTexture.h"
#include "host/CZemtarUUID.h"
#include "host/CZemtarUnit.h"

#include <string_view>

namespace Zemtar {
namespace {

/// Metres in one unit, by the unit's number. NOTE: inch and multiples by the international yard of 1959.
constexpr CZemtarLengthRatio MetreRatios[] = {
    {1.0, 1e10},       // angstrom
    {1.0, 1e9},        // nanometre
    {1.0, 1e6},        // micrometre
    {1.0, 1e3},        // millimetre
    {1.0, 1e2},        // centimetre
    {1.0, 10.0},       // decimetre
    {1.0, 1.0},        // metre
    {10.0, 1.0},       // decametre
    {1e2, 1.0},        // hectometre
    {1e3, 1.0},        // kilometre
    {1e6, 1.0},        // megametre
    {1e9, 1.0},        // gigametre
    {127.0, 5e9},      // microinch
    {127.0, 5e6},      // mil
    {127.0, 5e3},      // inch
    {381.0, 1250.0},   // foot
    {1143.0, 1250.0},  // yard
    {12573.0, 2500.0}, // rod, 5.5 yards
    {25146.0, 125.0},  // furlong, 220 yards
    {201168.0, 125.0}, // mile, 1760 yards
};
static_assert(sizeof(MetreRatios) / sizeof(MetreRatios[0]) == eLengthUnitMile + 1);

constexpr std::string_view UuidPattern = "hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh";

int HexDigit(char digit)
{
    constexpr std::string_view HexDigits = "0123456789abcdef";
    const char lower = digit >= 'A' && digit <= 'F' ? static_cast<char>(digit - 'A' + 'a') : digit;
    const std::size_t value = HexDigits.find(lower);
    return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

bool IsAbsolute(const CZemtarString& name)
{
    const auto isSeparator = [&name](int index) { return name[index] == L'/' || name[index] == L'\\'; };
    return isSeparator(0) || (name[1] == L':' && isSeparator(2));
}

/// Gives the length of the folder part with its last separator.
int FolderLength(const CZemtarString& name)
{
    CZemtarString bare(name);
    return name.Length() - bare.RemovePath().Length();
}

} // namespace

CZemtarMatrix CZemtarMatrix::operator*(const CZemtarMatrix& other) const
{
    CZemtarMatrix product;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            double sum = 0.0;
            for (int k = 0; k < 4; ++k) {
                sum += M(row, k) * other.M(k, column);
            }
            product.M(row, column) = sum;
        }
    }
    return product;
}

CZemtar3DVertex CZemtarMatrix::TransformPoint(const CZemtar3DVertex& point) const
{
    const auto row = [&](int r) {
        return M(r, 0) * point.X() + M(r, 1) * point.Y() + M(r, 2) * point.Z() + M(r, 3);
    };
    return {row(0), row(1), row(2)};
}

CZemtarLengthRatio CZemtarUnit::MetreRatio(enumLengthUnit unit)
{
    const auto number = static_cast<unsigned>(unit);
    return number <= eLengthUnitMile ? MetreRatios[number] : CZemtarLengthRatio{};
}

CZemtarUUID::CZemtarUUID(const CZemtarString& text)
{
    std::string digits = text.toStdString();
    if (digits.size() == UuidPattern.size() + 2 && digits.front() == '{' && digits.back() == '}') {
        digits = digits.substr(1, UuidPattern.size());
    }
    if (digits.size() != UuidPattern.size()) {
        return;
    }
    std::array<unsigned char, 16> bytes{};
    std::size_t nibble = 0;
    for (std::size_t i = 0; i < UuidPattern.size(); ++i) {
        if (UuidPattern[i] == '-') {
            if (digits[i] != '-') {
                return;
            }
            continue;
        }
        const int value = HexDigit(digits[i]);
        if (value < 0) {
            return;
        }
        bytes[nibble / 2] = static_cast<unsigned char>(bytes[nibble / 2] << 4 | value);
        ++nibble;
    }
    m_bytes = bytes;
}

CZemtarUUID::operator CZemtarString() const
{
    constexpr std::string_view HexDigits = "0123456789abcdef";
    std::string text = "{";
    std::size_t nibble = 0;
    for (const char place : UuidPattern) {
        if (place == '-') {
            text += place;
            continue;
        }
        const unsigned byte = m_bytes[nibble / 2];
        text += HexDigits[nibble % 2 == 0 ? byte >> 4 : byte & 0xFU];
        ++nibble;
    }
    return CZemtarString(text + "}");
}

CZemtarString CZemtarTexture::FullFilename(bool runTime) const
{
    if (runTime && !m_runTimeFilename.IsEmpty()) {
        return m_runTimeFilename;
    }
    if (m_path.IsEmpty() || IsAbsolute(m_filename)) {
        return m_filename;
    }
    const wchar_t last = m_path[m_path.Length() - 1];
    CZemtarString separator(last == L'/' || last == L'\\' ? L"" : L"/");
    return m_path + separator.ReplaceSlashWithSystemSlash() + m_filename;
}

void CZemtarTexture::SetFilename(const CZemtarString& filename, bool keepPath)
{
    m_filename = filename;
    if (!keepPath) {
        m_path = filename;
        m_path.TruncateAfter(FolderLength(filename));
        m_filename.RemovePath();
    }
}

} // namespace Zemtar
