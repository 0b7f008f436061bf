#pragma once

#include <QString>

namespace Zemtar::FilePlacement {

/// A new, hidden name beside `file`, with the same suffix: for a file that takes its place when it is whole.
QString nameBeside(const QString& file);

/// Moves a finished file over `target`, or to where there is none, in one step; a link is itself replaced.
/// False leaves both as they were.
bool moveOver(const QString& finished, const QString& target);

} // namespace Zemtar::FilePlacement
