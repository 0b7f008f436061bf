// Parts out of bodies.
#include <unordered_map>

#include <BRep_Builder.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS_Compound.hxx>

#include <cadex/ModelData_BRepRepresentation.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include "sdk/brep/ShapeDescription.h"
#include "sdk/ifc/IfcBodies.h"
#include "sdk/mesh/EngineTolerances.h"
#include "sdk/model/TriangleSets.h"
#include "sdk/occt/CurvePolylines.h"
#include "sdk/occt/FacetedBRep.h"
#include "sdk/occt/OcctBRep.h"

namespace cadex::ifc {

using internal::MakeHandle;
using internal::MakeTriangleSet;
using internal::TriangleArrays;
namespace {

ModelData_Point PointOf(const gp_XYZ& p)
{
    return {p.X(), p.Y(), p.Z()};
}

/// Exact shapes as one compound, with curves as loose wires; faces that look other than the first body say
/// so.
ModelData_Part MakeShapePart(const Context& context, const Base_UTF16String& name,
                             const std::vector<Body*>& shapes, const std::vector<Body*>& curves)
{
    const BRep_Builder builder;
    TopoDS_Compound compound;
    builder.MakeCompound(compound);
    const ModelData_Appearance whole = shapes.front()->appearance;
    occt::OcctBRep exact(compound);
    occt::ShapeAppearances& appearances = exact.appearances;
    for (const Body* body : shapes) {
        builder.Add(compound, body->shape);
        for (TopExp_Explorer face(body->shape, TopAbs_FACE);
             face.More() && body->appearance.Impl() != whole.Impl() && !body->appearance.IsNull();
             face.Next()) {
            appearances.Bind(face.Current(), body->appearance);
        }
    }
    for (const Body* body : curves) {
        for (const Path& curve : body->curves) {
            try {
                const TopoDS_Wire wire = WireOf(context, curve, false);
                builder.Add(compound, wire);
                for (TopExp_Explorer edge(wire, TopAbs_EDGE); edge.More() && !body->appearance.IsNull();
                     edge.Next()) {
                    appearances.Bind(edge.Current(), body->appearance);
                }
            } catch (const Unbuildable&) {
                // a curve without length is no curve
            }
        }
    }
    exact.appearance = whole;
    ModelData_Part part(name);
    part.AddRepresentation(MakeHandle<ModelData_BRepRepresentation>(brep::MakeShapeBRep(exact)));
    if (!whole.IsNull()) {
        part.SetAppearance(whole);
    }
    return part;
}

/// Appends the triangles with the points that they use; those without area are left out.
void AddFacets(Context& context, const Polyhedron& facets, occt::FacetGroup& group)
{
    constexpr U32 Unused = 0xFFFFFFFFU;
    const std::vector<U32> triangles = Triangulate(context, facets);
    std::vector<U32> indexOf(facets.points.size(), Unused);
    group.indices.reserve(group.indices.size() + triangles.size());
    for (std::size_t i = 0; i + 2 < triangles.size(); i += 3) {
        const gp_XYZ way = facets.points[triangles[i + 1]] - facets.points[triangles[i]];
        const gp_XYZ other = facets.points[triangles[i + 2]] - facets.points[triangles[i]];
        if (!(way.CrossSquareMagnitude(other) > 1e-28 * way.SquareModulus() * other.SquareModulus())) {
            continue;
        }
        for (std::size_t corner = 0; corner < 3; ++corner) {
            U32& index = indexOf[triangles[i + corner]];
            if (index == Unused) {
                index = static_cast<U32>(group.points.size());
                group.points.push_back(PointOf(facets.points[triangles[i + corner]]));
            }
            group.indices.push_back(index);
        }
    }
}

ModelData_Part MakeFacetPart(Context& context, const Base_UTF16String& name, const std::vector<Body*>& bodies)
{
    auto* brep = new occt::FacetedBRep;
    const auto handle = MakeHandle<ModelData_BRepRepresentation>(brep);
    brep->closed = true;
    std::unordered_map<const void*, std::size_t> groupOf;
    for (const Body* body : bodies) {
        brep->closed = brep->closed && body->facets.closed;
        const auto [entry, fresh] = groupOf.try_emplace(body->appearance.Impl(), brep->groups.size());
        if (fresh) {
            brep->groups.emplace_back().appearance = body->appearance;
        }
        const AtWork atWork(context, body->item);
        AddFacets(context, body->facets, brep->groups[entry->second]);
    }
    ModelData_Part part(name);
    part.AddRepresentation(handle);
    if (!bodies.front()->appearance.IsNull()) {
        part.SetAppearance(bodies.front()->appearance);
    }
    return part;
}

/// The normal of each triangle for its three corners: what a tessellation without normals means.
void AddFlatNormals(const Polyhedron& facets, const std::vector<U32>& triangles,
                    ModelData_IndexedTriangleSet& mesh)
{
    std::vector<ModelData_Vectorf> normals;
    std::vector<ModelData_PolyVertexSet::IndexType> indices;
    normals.reserve(triangles.size() / 3);
    indices.reserve(triangles.size());
    for (std::size_t i = 0; i + 2 < triangles.size(); i += 3) {
        const gp_XYZ& a = facets.points[triangles[i]];
        const gp_XYZ area =
            (facets.points[triangles[i + 1]] - a).Crossed(facets.points[triangles[i + 2]] - a);
        const gp_XYZ normal = Unit(area, gp_XYZ());
        indices.insert(indices.end(), 3, static_cast<int>(normals.size()));
        normals.emplace_back(static_cast<float>(normal.X()), static_cast<float>(normal.Y()),
                             static_cast<float>(normal.Z()));
    }
    mesh.AddNormals(normals.data(), normals.size(), indices.data(), indices.size());
}

ModelData_IndexedTriangleSet MakeMesh(Context& context, Polyhedron&& facets)
{
    const std::vector<U32> triangles = Triangulate(context, facets);
    TriangleArrays arrays;
    arrays.indices = triangles;
    arrays.points.reserve(facets.points.size());
    for (const gp_XYZ& point : facets.points) {
        arrays.points.push_back(PointOf(point));
    }
    const bool smooth = !facets.normals.empty();
    arrays.normals = std::move(facets.normals);
    ModelData_IndexedTriangleSet mesh = MakeTriangleSet(std::move(arrays));
    if (!smooth) {
        AddFlatNormals(facets, triangles, mesh);
    }
    return mesh;
}

/// Meshes as triangle sets and each chain of curves as a polyline set of its own.
ModelData_Part MakePolyPart(Context& context, const Base_UTF16String& name, const std::vector<Body*>& meshes,
                            const std::vector<Body*>& curves)
{
    ModelData_PolyRepresentation poly{initialized()};
    for (Body* body : meshes) {
        const AtWork atWork(context, body->item);
        ModelData_IndexedTriangleSet mesh = MakeMesh(context, std::move(body->facets));
        if (!body->appearance.IsNull()) {
            mesh.SetAppearance(body->appearance);
        }
        poly.Add(mesh);
    }
    for (const Body* body : curves) {
        std::vector<occt::Polyline> lines;
        for (const Path& curve : body->curves) {
            occt::Polyline& line = lines.emplace_back();
            for (const gp_XYZ& point : Sampled(curve)) {
                line.push_back(PointOf(point));
            }
        }
        for (const occt::Polyline& points : occt::JoinCurves(std::move(lines), tolerance::JoinedCurves)) {
            ModelData_PolyLineSet line{initialized()};
            line.AddPolyLine(points.data(), points.size());
            if (!body->appearance.IsNull()) {
                line.SetAppearance(body->appearance);
            }
            poly.Add(line);
        }
    }
    ModelData_Part part(name);
    part.AddRepresentation(poly);
    const Body* first = meshes.empty() ? curves.front() : meshes.front();
    if (!first->appearance.IsNull()) {
        part.SetAppearance(first->appearance);
    }
    return part;
}

} // namespace

namespace {

/// Polygons where all is flat, kernel shapes where something is curved or a curve stands beside: one part can
/// hold only one of the two.
void Unify(std::vector<Body>& bodies)
{
    bool flat = true;
    for (Body& body : bodies) {
        flat = flat && body.kind != Body::Kind::Curves;
        if (flat && body.kind == Body::Kind::Shape) {
            flat = FacetsOf(body.shape, body.facets);
        }
    }
    for (Body& body : bodies) {
        if (flat && body.kind == Body::Kind::Shape) {
            body.kind = Body::Kind::Facets;
            body.shape.Nullify();
        } else if (!flat && body.kind == Body::Kind::Facets && body.facets.loops.size() <= MostFacesOfShape) {
            body.kind = Body::Kind::Shape;
            body.shape = ShapeOf(body.facets);
        }
    }
}

} // namespace

std::vector<ModelData_Part> MakeParts(Context& context, const Base_UTF16String& name,
                                      std::vector<Body>&& bodies, const ModelData_Appearance& fallback)
{
    Unify(bodies);
    std::vector<Body*> of[4];
    for (Body& body : bodies) {
        if (body.appearance.IsNull()) {
            body.appearance = fallback;
        }
        of[static_cast<std::size_t>(body.kind)].push_back(&body);
    }
    const auto& shapes = of[static_cast<std::size_t>(Body::Kind::Shape)];
    auto& facets = of[static_cast<std::size_t>(Body::Kind::Facets)];
    auto& meshes = of[static_cast<std::size_t>(Body::Kind::Mesh)];
    const auto& curves = of[static_cast<std::size_t>(Body::Kind::Curves)];
    std::vector<ModelData_Part> parts;
    if (!shapes.empty()) {
        parts.push_back(MakeShapePart(context, name, shapes, curves));
    }
    if (shapes.empty() && !curves.empty()) {
        // a faceted body has no room for curves, a mesh has
        meshes.insert(meshes.begin(), facets.begin(), facets.end());
        facets.clear();
    }
    if (!facets.empty()) {
        parts.push_back(MakeFacetPart(context, name, facets));
    }
    if (!meshes.empty() || (shapes.empty() && !curves.empty())) {
        parts.push_back(MakePolyPart(context, name, meshes, shapes.empty() ? curves : std::vector<Body*>()));
    }
    return parts;
}

} // namespace cadex::ifc
