#include "common/encoding/CZemtarConvert.h"

#include <QChar>

#include <string>
#include <utility>

namespace Zemtar {
namespace {

static_assert(sizeof(wchar_t) == 4, "host strings hold 32-bit code points");

constexpr int kInvalidChannel = -1;

/// trunc(channel x 255), or kInvalidChannel where that is no number from 0 to 255.
int toQtChannel(double channel)
{
    const double scaled = channel * 255.0;
    // Truncation toward zero makes -0.9 a valid 0. NaN fails both comparisons.
    return scaled > -1.0 && scaled < 256.0 ? static_cast<int>(scaled) : kInvalidChannel;
}

} // namespace

// NOTE: QString::toUcs4 turns lone surrogates into U+FFFD and QString::fromUcs4 drops a leading U+FEFF. File
// names and CAD names may hold either, so both directions walk the text themselves.

CZemtarString CZemtarConvert::QStringToCZemtarString(QString text)
{
    std::wstring codePoints;
    codePoints.reserve(static_cast<std::size_t>(text.size()));
    const QChar* const end = text.constData() + text.size();
    for (const QChar* unit = text.constData(); unit != end; ++unit) {
        char32_t codePoint = unit->unicode();
        if (unit->isHighSurrogate() && unit + 1 != end && (unit + 1)->isLowSurrogate()) {
            codePoint = QChar::surrogateToUcs4(*unit, *(unit + 1));
            ++unit;
        }
        codePoints.push_back(static_cast<wchar_t>(codePoint));
    }
    return CZemtarString(codePoints.c_str());
}

QString CZemtarConvert::CZemtarStringToQString(CZemtarString text)
{
    QString result;
    result.reserve(text.Length());
    for (const wchar_t* character = std::as_const(text); *character != L'\0'; ++character) {
        const auto codePoint = static_cast<char32_t>(*character);
        if (codePoint <= 0xFFFF) {
            result.append(QChar(static_cast<char16_t>(codePoint)));
        } else if (codePoint <= QChar::LastValidCodePoint) {
            result.append(QChar(QChar::highSurrogate(codePoint)));
            result.append(QChar(QChar::lowSurrogate(codePoint)));
        } else {
            result.append(QChar(QChar::ReplacementCharacter));
        }
    }
    return result;
}

CZemtarUUID CZemtarConvert::QtToZemtar(QUuid uuid)
{
    return CZemtarUUID(QStringToCZemtarString(uuid.toString(QUuid::WithBraces)));
}

QUuid CZemtarConvert::ZemtarToQt(CZemtarUUID uuid)
{
    return QUuid::fromString(CZemtarStringToQString(uuid));
}

QColor CZemtarConvert::CZemtarColorToQColor(CZemtarColor color)
{
    return QColor(toQtChannel(color.R()), toQtChannel(color.G()), toQtChannel(color.B()),
                  toQtChannel(color.A()));
}

CZemtarColor CZemtarConvert::QColorToCZemtarColor(QColor color)
{
    return CZemtarColor(color.red() / 255.0, color.green() / 255.0, color.blue() / 255.0,
                        color.alpha() / 255.0);
}

} // namespace Zemtar
