#pragma once

#include "host/ZemtarCoreExport.h"

#include <string>

namespace Zemtar {

/// The texts that name the host application: what a settings store, a window title or an about box shows.
///
///     std::string organisation =
///     CZemtarBranding::getInstance()->getString(CZemtarBranding::OrganizationName);
class ZEMTAR_CORE_EXPORT CZemtarBranding
{
public:
    /// The numbers are fixed: plug-ins are built against them.
    enum String
    {
        OrganizationName = 0,   ///< organisation of the settings store
        OrganizationDomain = 1, ///< reversed domain, for bundle identifiers
        ApplicationTitle = 2,   ///< as shown to the user
        ApplicationName = 3,    ///< application of the settings store
        ApplicationVersion = 4,
        WindowIcon = 5 ///< resource path of the window icon
    };

    /// Gives the process-wide object; the caller does not own it.
    static CZemtarBranding* getInstance();

    /// Gives the text in UTF-8; empty for a number that stands for none.
    std::string getString(String which) const;

private:
    CZemtarBranding() = default;
};

} // namespace Zemtar
