// Faces are cut into convex fragments along the planes of the other body's faces; those that stay are put
// together again.
#include "sdk/ifc/IfcFlatBoolean.h"

#include <algorithm>
#include <cmath>

#include "sdk/ifc/IfcFragmentAssembly.h"
#include "sdk/ifc/IfcFragmentCuts.h"

namespace cadex::ifc {

using namespace flat;

namespace {

/// Takes tools that do not meet each other out of the list.
std::vector<const Fragments*> TakeApart(std::vector<Fragments>& tools, std::vector<bool>& taken)
{
    std::vector<const Fragments*> apart;
    std::vector<Box> boxes;
    for (std::size_t i = 0; i < tools.size(); ++i) {
        const Box box = BoxOf(tools[i]);
        const auto meets = [&](const Box& other) { return other.Meets(box, 2 * Weld); };
        if (!taken[i] && std::none_of(boxes.begin(), boxes.end(), meets)) {
            taken[i] = true;
            apart.push_back(&tools[i]);
            boxes.push_back(box);
        }
    }
    return apart;
}

} // namespace

bool CombineFlat(Context& context, BooleanKind kind, const Polyhedron& body,
                 const std::vector<const Polyhedron*>& tools, Polyhedron& result)
{
    const auto isClosed = [](const Polyhedron* tool) { return tool->closed; };
    if (!body.closed || !std::all_of(tools.begin(), tools.end(), isClosed)) {
        return false;
    }
    Budget budget;
    FragmentMaker maker(context);
    Fragments fragments = maker.Make(body);
    std::vector<Fragments> knives;
    knives.reserve(tools.size());
    for (const Polyhedron* tool : tools) {
        knives.push_back(maker.Make(*tool));
    }
    if (kind == BooleanKind::Cut) {
        std::vector<bool> taken(knives.size(), false);
        for (std::vector<const Fragments*> apart = TakeApart(knives, taken); !apart.empty();
             apart = TakeApart(knives, taken)) {
            fragments = Combined(budget, kind, fragments, apart);
        }
    } else {
        for (const Fragments& tool : knives) {
            fragments = Combined(budget, kind, fragments, {&tool});
        }
    }
    result = Polyhedron();
    return Assemble(budget, fragments, result);
}

Polyhedron Snapped(const Polyhedron& tool, const Polyhedron& body, double precision)
{
    constexpr std::size_t MostWork = 10'000'000; // of large bodies, a skin more does not matter
    Polyhedron snapped = tool;
    if (body.loops.size() * tool.points.size() > MostWork) {
        return snapped;
    }
    Box around;
    around.Add(tool.points);
    for (std::size_t loop = 0; loop < body.loops.size(); loop = body.FaceEnd(loop)) {
        Box box;
        for (U32 i = 0; i < body.loops[loop].count; ++i) {
            box.Add(body.points[body.corners[body.loops[loop].first + i]]);
        }
        const gp_XYZ area = AreaVector(body, body.loops[loop]);
        if (!box.Meets(around, precision) || !(area.Modulus() > Near * Near)) {
            continue;
        }
        const gp_XYZ normal = area.Normalized();
        const Plane plane{normal, normal.Dot(body.points[body.corners[body.loops[loop].first]])};
        for (gp_XYZ& point : snapped.points) {
            const double height = plane.Above(point);
            if (height != 0 && std::abs(height) <= precision) {
                point -= normal * height;
            }
        }
    }
    return snapped;
}

} // namespace cadex::ifc
