#pragma once

#include <QString>
#include <QTemporaryDir>

#include <optional>

/// A display that nobody sees, for pictures on machines without one. On X11 systems where neither a display
/// nor a platform of Qt's is named and Xvfb is installed, one is started with a key of its own and named to
/// this process; elsewhere nothing happens. It ends with the object, which must outlive the application
/// object:
///
///     const VirtualDisplay display(IsOptionGiven(argc, argv, "--preview"));
///     UseDisplayIfAny();
///     const QGuiApplication application(argc, argv);
class VirtualDisplay
{
public:
    explicit VirtualDisplay(bool isWanted);
    ~VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

private:
    bool Start(const QString& program);
    void Stop();

    std::optional<QTemporaryDir> m_folder; // of the key
    int m_process = -1;
};
