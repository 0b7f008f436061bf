#include "apps/shared/VirtualDisplay.h"

#include <QtGlobal>

#if defined(Q_OS_UNIX) && !defined(Q_OS_MACOS)

#include <QByteArray>
#include <QFile>
#include <QRandomGenerator>
#include <QStandardPaths>

#include <array>
#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int Patience = 10000; // milliseconds

/// An Xauthority file with one entry, for any host and display: family, address, display, kind of key, key;
/// each text behind its length.
QByteArray AuthorityFile()
{
    std::array<quint32, 4> key{};
    QRandomGenerator::system()->fillRange(key.data(), static_cast<qsizetype>(key.size()));
    const QByteArray kind = "MIT-MAGIC-COOKIE-1";
    QByteArray bytes("\xFF\xFF\0\0\0\0\0", 7);
    bytes += static_cast<char>(kind.size());
    bytes += kind;
    bytes += QByteArray("\0\x10", 2);
    return bytes + QByteArray(reinterpret_cast<const char*>(key.data()), sizeof(key));
}

/// The first line that comes out of a pipe; empty when there is none in time.
QByteArray LineFrom(int pipe)
{
    QByteArray line;
    pollfd waiting{pipe, POLLIN, 0};
    char letter = 0;
    while (poll(&waiting, 1, Patience) > 0 && read(pipe, &letter, 1) == 1) {
        if (letter == '\n') {
            return line;
        }
        line += letter;
    }
    return {};
}

} // namespace

VirtualDisplay::VirtualDisplay(bool isWanted)
{
    if (!isWanted) {
        return;
    }
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
        if (qEnvironmentVariableIsSet(name)) {
            return;
        }
    }
    const QString program = QStandardPaths::findExecutable(QStringLiteral("Xvfb"));
    if (!program.isEmpty() && !Start(program)) {
        Stop();
    }
}

VirtualDisplay::~VirtualDisplay()
{
    Stop();
}

bool VirtualDisplay::Start(const QString& program)
{
    m_folder.emplace(); // readable for the owner alone
    const QString keyFile = m_folder->filePath(QStringLiteral("key"));
    QFile file(keyFile);
    const QByteArray bytes = AuthorityFile();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush()) {
        return false;
    }
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        return false;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    posix_spawn_file_actions_addclose(&actions, ends[1]);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP); // Ctrl-C is not for it
    std::vector<std::string> words = {
        program.toStdString(), "-displayfd", "1", "-screen", "0", "1600x1000x24", "-nolisten", "tcp", "-auth",
        keyFile.toStdString(), "-terminate"}; // should this process be killed
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    pid_t process = -1;
    const bool started =
        posix_spawn(&process, words.front().c_str(), &actions, &attributes, arguments.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    close(ends[1]);
    m_process = started ? process : -1;
    const QByteArray number = started ? LineFrom(ends[0]) : QByteArray();
    close(ends[0]);
    return !number.isEmpty() && qputenv("DISPLAY", ":" + number) &&
           qputenv("XAUTHORITY", keyFile.toLocal8Bit());
}

void VirtualDisplay::Stop()
{
    if (m_process > 0) {
        kill(m_process, SIGTERM);
        while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {
        }
        m_process = -1;
    }
    m_folder.reset();
}

#else

VirtualDisplay::VirtualDisplay(bool) {}
VirtualDisplay::~VirtualDisplay() = default;

#endif
