// The nearest point of a surface: what stands behind Project of Surface.h.
#pragma once

#include <mutex>
#include <vector>

#include "sdk/brep/Surface.h"

namespace cadex::brep {

/// In closed form; the distance in between.
double ProjectElementary(const Surface& surface, const gp_Pnt& point, gp_Pnt2d& place);

/// Points of a surface from which searches start, made when the first search asks, on whichever thread.
class ProjectionGrid
{
public:
    struct Node
    {
        gp_Pnt2d place;
        gp_Pnt point;
    };
    const std::vector<Node>& Nodes(const Surface& surface);

private:
    std::once_flag myOnce;
    std::vector<Node> myNodes;
};

} // namespace cadex::brep
