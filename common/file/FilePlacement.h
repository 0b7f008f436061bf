#pragma once

#include <QString>

namespace Zemtar::FilePlacement {

/// A new, hidden name beside `file`, with the same suffix: for a file that takes its place when it is whole.
QString nameBeside(const QString& file);

/// Moves a finished file over `target`, or to where there is none, in one step; a link is itself replaced.
/// False leaves both as they were.
bool moveOver(const QString& finished, const QString& target);

/// A file that takes a target's place when it is whole, and is gone when it does not:
///
///     NewFile file(target);
///     return write(file.name()) && file.place();
///
/// On Linux, where the file system can, it has no name of its own until then: a killed process leaves
/// nothing.
class NewFile
{
public:
    /// `target`: a path in a folder that is there; what it links to is not looked at.
    explicit NewFile(const QString& target);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// Under which it is opened to be written, and given its permissions.
    const QString& name() const { return m_name; }
    /// False when it cannot take the target's place, which is then as it was.
    bool place();

private:
    QString m_target;
    QString m_name;
    int m_descriptor = -1; ///< of a nameless file
    bool m_isPlaced = false;
};

} // namespace Zemtar::FilePlacement
