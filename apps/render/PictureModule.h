#pragma once

#include <QString>

namespace Zemtar {
class CZemtarDocument;
}

/// What the module `zemtar-pictures` offers to a program that loads it when a picture is asked for: draws a
/// document into a file or, for more than no `frames`, into a turntable's files. `problem` becomes empty, or
/// says what went wrong. Needs a QCoreApplication of any kind; makes windows' ground where there is none yet.
using PictureWriter = void(const Zemtar::CZemtarDocument& document, const QString& file, int frames,
                           QString& problem);
constexpr const char* PictureWriterName = "ZemtarWritePicture";
