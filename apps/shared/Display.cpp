#include "apps/shared/Display.h"

#include <QByteArray>
#include <QtGlobal>

#include <algorithm>

void UseDisplayIfAny()
{
#if defined(Q_OS_UNIX) && !defined(Q_OS_MACOS)
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        return;
    }
    // NOTE: Qt tries the platforms of such a list in their order, and ends the process when none starts.
    QByteArray platforms;
    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) {
        platforms += "wayland;";
    }
    if (qEnvironmentVariableIsSet("DISPLAY")) {
        platforms += "xcb;";
    }
    qputenv("QT_QPA_PLATFORM", platforms + "offscreen");
#endif
}

bool IsOptionGiven(int argc, char** argv, std::string_view option)
{
    return std::any_of(argv, argv + argc,
                       [&](const char* word) { return std::string_view(word).starts_with(option); });
}
