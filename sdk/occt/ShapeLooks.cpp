#include "sdk/occt/ShapeLooks.h"

#include <utility>
#include <vector>

#include <TopoDS_Iterator.hxx>

#include "sdk/occt/OcctBRep.h"

namespace cadex::occt {
namespace {

bool IsSameObject(const ModelData_Appearance& left, const ModelData_Appearance& right)
{
    return left.Impl() == right.Impl();
}

} // namespace

struct ShapeLooks::Leaves
{
    std::vector<std::pair<TopoDS_Shape, ModelData_Appearance>> all;
    std::vector<ModelData_Appearance> bodies; // look of each solid, or shell, wire ... outside a solid
};

void ShapeLooks::Set(const TopoDS_Shape& shape, const ModelData_Appearance& surface,
                     const ModelData_Appearance& curve)
{
    if (shape.IsNull()) {
        return;
    }
    myLooks.Bind(shape, {surface, curve});
    // The members of a set may have been put into the part one by one.
    if (shape.ShapeType() == TopAbs_COMPOUND) {
        for (TopoDS_Iterator members(shape); members.More(); members.Next()) {
            if (!myLooks.IsBound(members.Value())) {
                myLooks.Bind(members.Value(), {surface, curve});
            }
        }
    }
}

const ShapeLooks::Look* ShapeLooks::Find(const TopoDS_Shape& shape) const
{
    const Look* look = myLooks.Seek(shape);
    // A shape that is placed several times has one look unless a placed one has its own.
    return look != nullptr || shape.Location().IsIdentity() ? look
                                                            : myLooks.Seek(shape.Located(TopLoc_Location()));
}

void ShapeLooks::Visit(const TopoDS_Shape& shape, Look look, int depth, Leaves& leaves) const
{
    if (const Look* own = Find(shape)) {
        look.surface = own->surface.IsNull() ? look.surface : own->surface;
        look.curve = own->curve.IsNull() ? look.curve : own->curve;
    }
    const TopAbs_ShapeEnum type = shape.ShapeType();
    if (depth == 0 && type != TopAbs_COMPOUND) {
        leaves.bodies.push_back(type == TopAbs_EDGE || type == TopAbs_WIRE ? look.curve : look.surface);
        ++depth;
    }
    if (type == TopAbs_FACE) {
        leaves.all.emplace_back(shape, look.surface);
        return;
    }
    if (type == TopAbs_EDGE) {
        leaves.all.emplace_back(shape, look.curve.IsNull() ? look.surface : look.curve);
        return;
    }
    if (type != TopAbs_VERTEX) {
        for (TopoDS_Iterator members(shape); members.More(); members.Next()) {
            Visit(members.Value(), look, depth, leaves);
        }
    }
}

void ShapeLooks::Apply(OcctBRep& body, const ModelData_Appearance& whole) const
{
    body.appearance = whole;
    if (IsEmpty()) {
        return;
    }
    Leaves leaves;
    Visit(body.shape, {whole, {}}, 0, leaves);
    const auto allSame = [](const auto& list, const auto& appearanceOf) {
        for (const auto& entry : list) {
            if (!IsSameObject(appearanceOf(entry), appearanceOf(list.front()))) {
                return false;
            }
        }
        return !list.empty();
    };
    if (allSame(leaves.all, [](const auto& leaf) { return leaf.second; })) {
        body.appearance = leaves.all.front().second;
        return;
    }
    if (allSame(leaves.bodies, [](const auto& look) { return look; })) {
        body.appearance = leaves.bodies.front();
    }
    for (const auto& [leaf, appearance] : leaves.all) {
        if (!IsSameObject(appearance, body.appearance)) {
            body.appearances.Bind(leaf, appearance);
        }
    }
}

} // namespace cadex::occt
