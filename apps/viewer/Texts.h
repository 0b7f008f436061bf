#pragma once

#include "common/encoding/CZemtarConvert.h"
#include "host/CZemtarBranding.h"

/// The host's text as Qt shows it.
inline QString Text(const Zemtar::CZemtarString& text)
{
    return Zemtar::CZemtarConvert::CZemtarStringToQString(text);
}

/// A text that names the application.
inline QString BrandingText(Zemtar::CZemtarBranding::String which)
{
    return QString::fromUtf8(Zemtar::CZemtarBranding::getInstance()->getString(which));
}
