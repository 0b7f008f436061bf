#pragma once

/// The directions from which a model is usually looked at. Z points up, the front is seen along +Y.
enum class StandardView
{
    Iso,
    Front,
    Back,
    Left,
    Right,
    Top,
    Bottom
};
