#pragma once

#include <QIcon>

/// The image window's icons, drawn with the colours of the palette that holds while they are painted, at any
/// size and device pixel ratio.
enum class ImageIcon
{
    Open,
    Save,
    Copy,
    Paste,
    Undo,
    Redo,
    Revert,
    ZoomIn,
    ZoomOut,
    Fit,
    ActualSize,
    Split,
    Tile,
    Batch,
};

QIcon MakeImageIcon(ImageIcon kind);
