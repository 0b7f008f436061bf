#include "host/CZemtarBranding.h"

namespace Zemtar {

CZemtarBranding* CZemtarBranding::getInstance()
{
    static CZemtarBranding instance;
    return &instance;
}

std::string CZemtarBranding::getString(String which) const
{
    switch (which) {
    case OrganizationName:
        return "Zemtar";
    case OrganizationDomain:
        return "org.zemtar";
    case ApplicationTitle:
        return "Zemtar Viewer";
    case ApplicationName:
        return "ZemtarViewer";
    case ApplicationVersion:
        return ZEMTAR_VERSION;
    case WindowIcon:
        return ":/zemtar/window-icon.png";
    }
    return {};
}

} // namespace Zemtar
