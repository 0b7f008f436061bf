#pragma once

#include <QString>

namespace Zemtar {
class CZemtarDocument;
}

/// Draws a document into a picture file, which is whole or not there or, for more than no `frames`, into the
/// numbered files of a turntable. The renderer and OpenGL are loaded for
/// the first picture. Gives an empty text, or what went wrong.
QString WritePreview(const Zemtar::CZemtarDocument& document, const QString& file, int frames);
