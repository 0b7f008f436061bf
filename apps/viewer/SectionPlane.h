#pragma once

#include "apps/render/Renderer.h"

/// Where the user cuts the model: square to an axis, at a part of its extent.
struct SectionPlane
{
    bool on = false;
    int axis = 0;          ///< 0 x, 1 y, 2 z
    double position = 0.5; ///< 0 at the lower end of the model, 1 at the upper
    bool flipped = false;  ///< keeps the lower part instead of the upper

    /// The cut through a box; none when it is off or the box empty.
    std::optional<SectionCut> Through(const Bounds& box) const;
};
