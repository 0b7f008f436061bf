#pragma once

#include "common/ZemtarExport.h"
#include "host/CZemtarColor.h"
#include "host/CZemtarString.h"
#include "host/CZemtarUUID.h"

#include <QColor>
#include <QString>
#include <QUuid>

namespace Zemtar {

/// The one bridge between the host's values and Qt's: strings, UUIDs and colours.
///
///     QFile file(CZemtarConvert::CZemtarStringToQString(fileName));
///     return CZemtarConvert::QStringToCZemtarString(file.fileName());
///
/// Host strings hold 32-bit code points up to the terminating zero, Qt's UTF-16 units. Every conversion is by
/// value and never fails.
class ZEMTAR_EXPORT CZemtarConvert
{
public:
    /// Converts without normalisation; a zero inside the text ends the host string.
    static CZemtarString QStringToCZemtarString(QString text);

    /// Converts without normalisation, a leading U+FEFF and lone surrogates included; beyond U+10FFFF:
    /// U+FFFD.
    static QString CZemtarStringToQString(CZemtarString text);

    /// Converts through the lower-case text form in braces.
    static CZemtarUUID QtToZemtar(QUuid uuid);

    /// Converts through the text form; a text that is no UUID gives the null UUID.
    static QUuid ZemtarToQt(CZemtarUUID uuid);

    /// Converts channels 0.0..1.0 to 0..255 by trunc(channel x 255). A channel whose integer lies outside
    /// 0..255 makes the result an invalid colour; it is not clamped.
    static QColor CZemtarColorToQColor(CZemtarColor color);

    /// Converts the 8-bit channels to 0.0..1.0 by channel / 255.
    static CZemtarColor QColorToCZemtarColor(QColor color);
};

} // namespace Zemtar
