#pragma once

#include <QIcon>

/// The pictures on buttons, menus and tree rows.
enum class Glyph
{
    Assembly,
    Part,
    Group,
    Mesh,
    Polyline,
    Eye,
    EyeOff,
    Import,
    Export,
    Fit,
    Isolate,
    ShowAll,
    Edges,
    Perspective,
    Search,
    Previous,
    Next,
    Filter,
    Image,
    Log,
    Properties,
    ViewIso,
    ViewFront,
    ViewBack,
    ViewLeft,
    ViewRight,
    ViewTop,
    ViewBottom
};

/// Icons drawn as lines in the palette's colours when they are shown: sharp at any pixel ratio, and right on
/// light and on dark.
class Icons
{
public:
    static QIcon Of(Glyph glyph);
    /// The application's own icon.
    static QIcon Application();
};
