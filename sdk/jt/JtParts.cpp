#include "sdk/jt/JtParts.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/jt/JtUnits.h"
#include "sdk/mesh/PlacedParts.h"
#include "sdk/parasolid/XtFile.h"

namespace cadex::jt {

namespace {

using internal::Report;
using internal::Reports;

constexpr std::size_t UnpackedEach = 64; ///< for a byte of the file
constexpr std::size_t UnpackedLeast = 64'000'000;
constexpr std::size_t ValuesLeast = 4'000'000;

constexpr std::size_t MostVisits = 5'000'000;

char16_t Lower(char16_t c)
{
    return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
}

void Place(internal::TriangleArrays& arrays, const mesh::Affine& placement)
{
    if (mesh::IsIdentity(placement)) {
        return;
    }
    for (ModelData_Point& point : arrays.points) {
        point = mesh::Apply(placement, point);
    }
    const double determinant = mesh::Determinant(placement.linear);
    if (std::abs(determinant) > 0) {
        const mesh::Matrix3 turn = mesh::Transposed(mesh::Inverse(placement.linear));
        for (ModelData_Vectorf& normal : arrays.normals) {
            const mesh::Vector3 turned =
                mesh::Multiply(turn, mesh::Vector3{normal.X(), normal.Y(), normal.Z()});
            const double length = mesh::Length(turned);
            if (length > 0) {
                normal = {static_cast<float>(turned[0] / length), static_cast<float>(turned[1] / length),
                          static_cast<float>(turned[2] / length)};
            }
        }
    }
    if (determinant < 0) {
        for (std::size_t i = 0; i + 2 < arrays.indices.size(); i += 3) {
            std::swap(arrays.indices[i + 1], arrays.indices[i + 2]);
        }
    }
}

/// Appends with indices moved behind those that are there.
void AppendArrays(internal::TriangleArrays& target, internal::TriangleArrays&& source)
{
    const auto shift = static_cast<U32>(target.points.size());
    if (shift == 0) {
        target = std::move(source);
        return;
    }
    target.points.insert(target.points.end(), source.points.begin(), source.points.end());
    target.normals.insert(target.normals.end(), source.normals.begin(), source.normals.end());
    target.uvs.insert(target.uvs.end(), source.uvs.begin(), source.uvs.end());
    std::transform(source.indices.begin(), source.indices.end(), std::back_inserter(target.indices),
                   [shift](U32 index) { return index + shift; });
}

ModelData_PolyVertexSet LineSet(const internal::TriangleArrays& arrays,
                                const std::vector<std::vector<U32>>& lines)
{
    ModelData_PolyLineSet set{initialized()};
    std::vector<ModelData_Point> points;
    for (const std::vector<U32>& line : lines) {
        points.clear();
        for (const U32 index : line) {
            points.push_back(arrays.points[index]);
        }
        set.AddPolyLine(points.data(), points.size());
    }
    return set;
}

} // namespace

Document::Document(std::string bytes)
    : file(std::move(bytes)),
      unpacked(file.Size() * UnpackedEach + UnpackedLeast),
      values(file.Size() * UnpackedEach + ValuesLeast),
      scene(ReadScene(file, unpacked))
{
}

void Document::CountVisit()
{
    if (++visits > MostVisits) {
        throw Unreadable("nodes multiply without end");
    }
}

std::optional<double> MillimetresOf(const Node& node)
{
    const std::u16string* text = node.Text(u"JT_PROP_MEASUREMENT_UNITS");
    if (text == nullptr) {
        return std::nullopt;
    }
    for (const UnitName& unit : UnitNames) {
        if (std::equal(text->begin(), text->end(), unit.name.begin(), unit.name.end(),
                       [](char16_t a, char16_t b) { return Lower(a) == Lower(b); })) {
            return unit.millimetres;
        }
    }
    return std::nullopt;
}

mesh::Affine PlacementOf(const Node& node, const Scene& scene)
{
    mesh::Affine placement;
    for (const std::int32_t id : node.attributes) {
        const auto found = scene.attributes.find(id);
        if (found == scene.attributes.end() || !found->second.transform || found->second.isIgnored) {
            continue;
        }
        const Matrix& m = *found->second.transform;
        if (std::any_of(m.begin(), m.end(), [](double value) { return !std::isfinite(value); })) {
            throw Unreadable("a placement is not finite");
        }
        placement = mesh::Compose(
            placement, {{m[0], m[4], m[8], m[1], m[5], m[9], m[2], m[6], m[10]}, {m[12], m[13], m[14]}});
    }
    return placement;
}

const LateLoaded* FindLateLoaded(const Node& node, int type)
{
    for (const Property& property : node.properties) {
        const auto* late = std::get_if<LateLoaded>(&property.value);
        if (late != nullptr && late->type == type) {
            return late;
        }
    }
    return nullptr;
}

std::vector<std::int32_t> ShownChildren(const Node& node)
{
    if (node.kind == Node::Kind::Levels && !node.children.empty()) {
        return {node.children.front()};
    }
    if (node.kind == Node::Kind::Switch) {
        const auto selected = static_cast<std::size_t>(node.selected);
        return node.selected >= 0 && selected < node.children.size()
                   ? std::vector<std::int32_t>{node.children[selected]}
                   : std::vector<std::int32_t>();
    }
    return node.children;
}

ModelData_SceneGraphElement PartMaker::Make(const Node& node, const Base_UTF16String& name,
                                            double millimetres)
{
    if (ModelData_SceneGraphElement exact = MakeExact(node, name, true); !exact.IsNull()) {
        return exact;
    }
    myPieces.clear();
    mesh::Affine scale;
    scale.linear = {millimetres, 0, 0, 0, millimetres, 0, 0, 0, millimetres};
    const ModelData_Appearance look = myLooks.Of(node, myDocument.scene, {});
    Collect(node, scale, look, 0); // the node's own placement is that of its instance
    if (!myPieces.empty()) {
        return PartOfPieces(name, look);
    }
    ModelData_SceneGraphElement exact = MakeExact(node, name, false);
    if (exact.IsNull() && node.kind == Node::Kind::Part) {
        exact = ModelData_Part(name); // it has a place in the tree
        exact.SetAppearance(look);
    }
    return exact;
}

ModelData_SceneGraphElement PartMaker::MakeExact(const Node& node, const Base_UTF16String& name,
                                                 bool mustBeWhole)
{
    const LateLoaded* late = FindLateLoaded(node, segment::XtBody);
    const Segment* segment = late == nullptr ? nullptr : myDocument.file.Find(late->segment);
    if (segment == nullptr) {
        return {};
    }
    std::string storage;
    Bytes in = myDocument.file.Open(*segment, storage, myDocument.unpacked);
    const std::string_view data = in.Take(in.Left());
    const std::size_t begin = data.find(std::string_view("PS\0\0", 4));
    if (begin == std::string_view::npos) {
        return {};
    }
    std::vector<ModelData_Part> parts;
    try {
        parasolid::XtContents contents = parasolid::ReadXt(data.substr(begin));
        const auto isWhole = [](const parasolid::XtBody& body) { return body.lostFaces == 0; };
        if (mustBeWhole && !std::all_of(contents.bodies.begin(), contents.bodies.end(), isWhole)) {
            Reports::Add(Report::Kind::Repaired,
                         "an exact body with unknown faces is shown by its triangles");
            return {};
        }
        for (parasolid::XtBody& body : contents.bodies) {
            if (body.description.appearance.IsNull()) {
                body.description.appearance = myLooks.Of(node, myDocument.scene, {});
            }
            const ModelData_Part part = MakePart(std::move(body), name);
            if (!part.IsNull()) {
                parts.push_back(part);
            }
        }
    } catch (const parasolid::Unreadable& reason) {
        Reports::Add(Report::Kind::Repaired,
                     std::string("an exact body that cannot be read is shown by its triangles: ") +
                         reason.what());
        return {};
    }
    if (parts.empty()) {
        return {};
    }
    if (parts.size() == 1) {
        return parts.front();
    }
    ModelData_Assembly bodies(name);
    for (const ModelData_Part& part : parts) {
        bodies.AddInstance(ModelData_Instance(part, name));
    }
    return bodies;
}

void PartMaker::Collect(const Node& node, const mesh::Affine& placement, const ModelData_Appearance& look,
                        int depth)
{
    if (node.isHidden) {
        Reports::Add(Report::Kind::LeftOut, "a hidden node");
        return;
    }
    if (depth > DeepestNode) {
        throw Unreadable("nodes are nested too deep");
    }
    myDocument.CountVisit();
    switch (node.kind) {
    case Node::Kind::Shape:
        TakeShape(node, placement, look);
        return;
    case Node::Kind::Primitive:
        Reports::Add(Report::Kind::LeftOut, "a box, sphere or other primitive without triangles");
        return;
    case Node::Kind::Wires:
        Reports::Add(Report::Kind::LeftOut, "a wire harness");
        return;
    default:
        break;
    }
    for (const std::int32_t id : ShownChildren(node)) {
        const auto child = myDocument.scene.nodes.find(id);
        if (child == myDocument.scene.nodes.end()) {
            throw Unreadable("a node has a child that is not there");
        }
        Collect(child->second, mesh::Compose(placement, PlacementOf(child->second, myDocument.scene)),
                myLooks.Of(child->second, myDocument.scene, look), depth + 1);
    }
}

void PartMaker::TakeShape(const Node& node, const mesh::Affine& placement, const ModelData_Appearance& look)
{
    for (const Property& property : node.properties) {
        const auto* late = std::get_if<LateLoaded>(&property.value);
        if (late == nullptr || late->type < segment::Shape || late->type > segment::LastShape) {
            continue;
        }
        const Segment* segment = myDocument.file.Find(late->segment);
        if (segment == nullptr) {
            throw Unreadable("the triangles of a shape are not there");
        }
        if (!internal::Progress::GoesOn(segment->offset, myDocument.file.Size())) {
            throw Unreadable("cancelled");
        }
        std::string storage;
        try {
            Shape shape =
                ReadShape(myDocument.file.Open(*segment, storage, myDocument.unpacked), myDocument.values);
            Place(shape.arrays, placement);
            Append(std::move(shape), look);
        } catch (const Unsupported& reason) {
            Reports::Add(Report::Kind::LeftOut, reason.what());
        }
        return;
    }
}

/// Shapes that look the same are one set.
void PartMaker::Append(Shape&& shape, const ModelData_Appearance& look)
{
    if (shape.hasColours) {
        Reports::Add(Report::Kind::LeftOut, "colours of single vertices");
    }
    if (shape.arrays.indices.empty() && shape.lines.empty()) {
        return;
    }
    const bool hasNormals = !shape.arrays.normals.empty();
    const bool hasUvs = !shape.arrays.uvs.empty();
    const auto same = std::find_if(myPieces.begin(), myPieces.end(), [&](const Piece& piece) {
        return piece.kind == shape.kind && piece.look.Impl() == look.Impl() &&
               piece.arrays.normals.empty() != hasNormals && piece.arrays.uvs.empty() != hasUvs;
    });
    if (same == myPieces.end()) {
        myPieces.push_back({shape.kind, look, std::move(shape.arrays), std::move(shape.lines)});
        return;
    }
    const auto shift = static_cast<U32>(same->arrays.points.size());
    for (std::vector<U32>& line : shape.lines) {
        std::transform(line.begin(), line.end(), line.begin(), [shift](U32 index) { return index + shift; });
        same->lines.push_back(std::move(line));
    }
    AppendArrays(same->arrays, std::move(shape.arrays));
}

ModelData_Part PartMaker::PartOfPieces(const Base_UTF16String& name, const ModelData_Appearance& look)
{
    ModelData_Part part(name);
    ModelData_PolyRepresentation representation{initialized()};
    const ModelData_Appearance first = myPieces.front().look;
    const bool isOne = std::all_of(myPieces.begin(), myPieces.end(),
                                   [&](const Piece& piece) { return piece.look.Impl() == first.Impl(); });
    part.SetAppearance(isOne ? first : look);
    for (Piece& piece : myPieces) {
        ModelData_PolyVertexSet set = piece.kind == Shape::Kind::Polylines
                                          ? LineSet(piece.arrays, piece.lines)
                                          : internal::MakeTriangleSet(std::move(piece.arrays));
        set.SetName(name);
        if (!isOne) {
            set.SetAppearance(piece.look);
        }
        representation.Add(set);
    }
    part.AddRepresentation(representation);
    myPieces.clear();
    return part;
}

} // namespace cadex::jt
