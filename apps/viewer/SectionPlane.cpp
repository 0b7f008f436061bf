#include "apps/viewer/SectionPlane.h"

std::optional<SectionCut> SectionPlane::Through(const Bounds& box) const
{
    if (!on || box.IsEmpty()) {
        return std::nullopt;
    }
    const double sign = flipped ? -1.0 : 1.0;
    const Vec3 normal{axis == 0 ? sign : 0.0, axis == 1 ? sign : 0.0, axis == 2 ? sign : 0.0};
    const Vec3 place = box.min + position * box.Size();
    return SectionCut{normal, Dot(normal, place)};
}
