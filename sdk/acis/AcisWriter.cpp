#include "sdk/acis/AcisWriter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <vector>

#include <cadex/ModelData_PolyLineSet.hxx>

#include "sdk/mesh/PolyLines.h"
#include "sdk/text/LengthUnits.h"

namespace cadex::acis {

using mesh::PolygonBody;

namespace {

constexpr std::size_t Nothing = static_cast<std::size_t>(-1); ///< points nowhere
constexpr std::size_t PieceSize = std::size_t{1} << 18;
constexpr double Tolerance = 1e-6; ///< of the header, in the file's unit
constexpr double FlatWithin = 1e-7;

bool HasWires(const ModelData_Part& part)
{
    const ModelData_PolyRepresentation shapes = part.PolyRepresentation(ModelData_RM_Poly);
    for (std::size_t i = 0; !shapes.IsNull() && i < shapes.Get().Size(); ++i) {
        if (shapes.Get()[i].IsOfType<ModelData_PolyLineSet>()) {
            return true;
        }
    }
    return false;
}

} // namespace

/// A chain of straight edges; no two points behind each other are the same.
struct AcisWriter::Wire
{
    std::vector<Vector3> points;
    bool isClosed = false; ///< the last point goes on to the first
    std::optional<ModelData_Color> colour;
};

std::vector<AcisWriter::Wire> AcisWriter::WiresOf(const mesh::PlacedPart& placed, const mesh::Affine& toFile)
{
    std::vector<Wire> wires;
    const ModelData_PolyRepresentation shapes = placed.part.PolyRepresentation(ModelData_RM_Poly);
    for (std::size_t i = 0; i < shapes.Get().Size(); ++i) {
        const ModelData_PolyVertexSet& set = shapes.Get()[i];
        if (!set.IsOfType<ModelData_PolyLineSet>()) {
            continue;
        }
        const ModelData_Appearance own = set.Appearance();
        for (const auto& chain : mesh::ChainsOf(*static_cast<internal::PolyLineSetImpl*>(set.Impl()))) {
            Wire wire;
            wire.colour = mesh::ColourOf(own.IsNull() ? placed.appearance : own);
            for (const ModelData_Point& corner : chain) {
                const ModelData_Point point = mesh::Apply(toFile, corner);
                const Vector3 place{point.X(), point.Y(), point.Z()};
                if (wire.points.empty() || place != wire.points.back()) {
                    wire.points.push_back(place);
                }
            }
            wire.isClosed = wire.points.size() > 3 && wire.points.front() == wire.points.back();
            if (wire.isClosed) {
                wire.points.pop_back();
            }
            if (wire.points.size() > 1) {
                wires.push_back(std::move(wire));
            }
        }
    }
    return wires;
}

/// One shell and where its records stand: all of a kind behind each other.
struct AcisWriter::Region
{
    const mesh::FlatPart* part = nullptr;
    const PolygonBody* polygons = nullptr;
    bool isClosed = false;
    std::size_t colouredFaces = 0;
    std::size_t body = Nothing; ///< where the region is the first of its lump
    std::size_t lump = Nothing;
    std::size_t nextLump = Nothing;
    std::size_t nextShell = Nothing;
    std::size_t shell = 0;
    std::size_t faces = 0;
    std::size_t loops = 0;
    std::size_t coedges = 0;
    std::size_t edges = 0;    ///< each followed by its curve
    std::size_t vertexes = 0; ///< each followed by its point
    std::size_t surfaces = 0;
    std::size_t attributes = 0;

    /// Gives the record behind the region.
    std::size_t Place(std::size_t first)
    {
        shell = first;
        faces = shell + 1;
        loops = faces + polygons->faces.size();
        coedges = loops + polygons->loops.size();
        edges = coedges + polygons->coedges.size();
        vertexes = edges + 2 * polygons->edges.size();
        surfaces = vertexes + 2 * polygons->vertices.size();
        attributes = surfaces + polygons->faces.size();
        return attributes + colouredFaces;
    }
    const Vector3& At(std::uint32_t place) const { return part->At(*polygons, place); }
};

AcisWriter::AcisWriter(text::ByteSink& sink, const ModelData_Model& model, Base_LengthUnit unit)
    : mySink(sink), myModel(model), myMillimetres(text::LengthUnitOf(unit).millimetres)
{
}

/// The shortest text that reads back as the same number.
template <typename Real>
void AcisWriter::Number(Real value)
{
    char text[32];
    myBuffer.append(text, std::to_chars(text, text + sizeof(text), value).ptr);
    myBuffer += ' ';
}

bool AcisWriter::Write()
{
    std::size_t bodies = 0;
    mesh::ForEachPlacedPart(myModel, [&](const mesh::PlacedPart& placed) {
        bodies += (mesh::HasTriangles(placed.part) ? 1U : 0U) + (HasWires(placed.part) ? 1U : 0U);
    });
    WriteHeader(bodies);
    mesh::ForEachPlacedPart(myModel, [&](const mesh::PlacedPart& placed) { WritePart(placed); });
    myBuffer += "End-of-ACIS-data \n";
    return myIsWhole && mySink.Write(myBuffer);
}

/// Without the time of writing, so that equal models give equal files.
void AcisWriter::WriteHeader(std::size_t bodies)
{
    myBuffer += "700 0 " + std::to_string(bodies) + " 0 \n";
    Text("cadex open engine");
    Text("ACIS 7.0");
    Text("Thu Jan 01 00:00:00 1970");
    myBuffer += '\n';
    Number(myMillimetres);
    Number(Tolerance);
    Number(1e-10);
    myBuffer += '\n';
}

/// What stands in front of the lumps of a body: the body itself, its colour, its name, its transform.
struct AcisWriter::BodyHead
{
    std::size_t body;
    const mesh::PlacedPart& placed;
    std::optional<ModelData_Color> colour;
    bool isMoved;

    bool HasName() const { return !placed.name.IsEmpty(); }
    std::size_t NameRecord() const { return body + 1 + (colour ? 1 : 0); }
    std::size_t TransformRecord() const { return NameRecord() + (HasName() ? 1 : 0); }
    std::size_t Behind() const { return TransformRecord() + (isMoved ? 1 : 0); }
};

void AcisWriter::WriteHead(const BodyHead& head, std::size_t lump)
{
    const std::size_t colourRecord = head.body + 1;
    Begin("body", head.colour ? colourRecord : head.HasName() ? head.NameRecord() : Nothing);
    Pointer(lump);
    Pointer(Nothing);
    Pointer(head.isMoved ? head.TransformRecord() : Nothing);
    End();
    if (head.colour) {
        WriteColour(head.body, head.HasName() ? head.NameRecord() : Nothing, *head.colour);
    }
    if (head.HasName()) {
        WriteName(head.body, head.colour ? colourRecord : Nothing, head.placed.name);
    }
    if (head.isMoved) {
        WriteTransform(head.placed.placement);
    }
}

void AcisWriter::WritePart(const mesh::PlacedPart& placed)
{
    // a movement stays one, so that equal parts have equal records; anything else goes into the points
    const bool isMoved = mesh::IsMovement(placed.placement) && !mesh::IsIdentity(placed.placement);
    const double scale = 1 / myMillimetres;
    const mesh::Affine toFile = mesh::Compose({{scale, 0, 0, 0, scale, 0, 0, 0, scale}, {}},
                                              isMoved ? mesh::Affine() : placed.placement);
    if (myIsWhole && mesh::HasTriangles(placed.part)) {
        WriteFacets(placed, toFile, isMoved);
    }
    if (myIsWhole && HasWires(placed.part)) {
        WriteWires(placed, toFile, isMoved);
    }
}

/// A part whose triangles all have no area is an empty body.
void AcisWriter::WriteFacets(const mesh::PlacedPart& placed, const mesh::Affine& toFile, bool isMoved)
{
    const mesh::FlatPart part(placed, toFile, FlatWithin, mesh::OtherSets::AreTaken);
    std::vector<Region> regions;
    const std::size_t body = myNext;
    const BodyHead head{body, placed, part.BodyColour(), isMoved};
    std::size_t next = head.Behind();
    const std::size_t firstLump = part.bodies.empty() ? Nothing : next;
    for (const mesh::FlatBody& piece : part.bodies) {
        const std::size_t lump = next++;
        for (const PolygonBody& shell : piece.shells) {
            Region region;
            region.part = &part;
            region.polygons = &shell;
            region.isClosed = piece.isClosed;
            region.body = &shell == &piece.shells.front() ? body : Nothing;
            region.lump = lump;
            region.colouredFaces = static_cast<std::size_t>(
                std::count_if(shell.faces.begin(), shell.faces.end(),
                              [&](const PolygonBody::Face& face) { return part.IsColoured(face); }));
            next = region.Place(next);
            region.nextShell = &shell == &piece.shells.back() ? Nothing : next;
            region.nextLump = &piece == &part.bodies.back() ? Nothing : next; // true of the last shell alone
            regions.push_back(region);
        }
        regions[regions.size() - piece.shells.size()].nextLump = regions.back().nextLump;
    }
    WriteHead(head, firstLump);
    for (const Region& region : regions) {
        WriteRegion(region);
    }
}

void AcisWriter::WriteWires(const mesh::PlacedPart& placed, const mesh::Affine& toFile, bool isMoved)
{
    const std::vector<Wire> wires = WiresOf(placed, toFile);
    const BodyHead head{myNext, placed, wires.empty() ? std::nullopt : wires.front().colour, isMoved};
    const std::size_t lump = head.Behind();
    const std::size_t shell = lump + 1;
    WriteHead(head, wires.empty() ? Nothing : lump);
    if (wires.empty()) {
        return; // all of their lines are points
    }
    Begin("lump", Nothing);
    Pointer(Nothing);
    Pointer(shell);
    Pointer(head.body);
    End();
    Begin("shell", Nothing);
    Pointer(Nothing);
    Pointer(Nothing);
    Pointer(Nothing);
    Pointer(shell + 1);
    Pointer(lump);
    End();
    for (const Wire& wire : wires) {
        WriteWire(wire, shell, &wire == &wires.back(), head.colour);
    }
}

/// The wire, its coedges, edges with their lines, vertices with their points, colours of edges.
void AcisWriter::WriteWire(const Wire& wire, std::size_t shell, bool isLast,
                           const std::optional<ModelData_Color>& bodyColour)
{
    const std::size_t record = myNext;
    const std::size_t count = wire.points.size() - (wire.isClosed ? 0 : 1); // of edges
    const std::size_t coedges = record + 1;
    const std::size_t edges = coedges + count;
    const std::size_t vertexes = edges + 2 * count;
    const std::size_t colours = vertexes + 2 * wire.points.size();
    const bool isColoured = wire.colour && !(bodyColour && *wire.colour == *bodyColour);
    Begin("wire", Nothing);
    Pointer(isLast ? Nothing : colours + (isColoured ? count : 0));
    Pointer(coedges);
    Pointer(shell);
    Pointer(Nothing);
    Word("out");
    End();
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t next = i + 1 < count ? i + 1 : wire.isClosed ? 0 : i;
        const std::size_t previous = i > 0 ? i - 1 : wire.isClosed ? count - 1 : i;
        Begin("coedge", Nothing);
        Pointer(coedges + next);
        Pointer(coedges + previous);
        Pointer(Nothing);
        Pointer(edges + 2 * i);
        Word("forward");
        Pointer(record);
        Pointer(Nothing);
        End();
    }
    const auto endOf = [&](std::size_t i) { return (i + 1) % wire.points.size(); };
    for (std::size_t i = 0; i < count; ++i) {
        const Vector3 along = mesh::Minus(wire.points[endOf(i)], wire.points[i]);
        const double length = mesh::Length(along);
        WriteEdge(isColoured ? colours + i : Nothing, vertexes + 2 * i, vertexes + 2 * endOf(i), coedges + i,
                  wire.points[i], {along[0] / length, along[1] / length, along[2] / length}, length);
    }
    for (std::size_t i = 0; i < wire.points.size(); ++i) {
        WriteVertex(edges + 2 * std::min(i, count - 1), wire.points[i]);
    }
    for (std::size_t i = 0; i < count && isColoured; ++i) {
        WriteColour(edges + 2 * i, Nothing, *wire.colour);
    }
}

/// Points are rows, so the matrix is the transpose of ours; without the factor, which follows the
/// translation.
void AcisWriter::WriteTransform(const mesh::Affine& placement)
{
    const mesh::Matrix3& m = placement.linear;
    const double factor = mesh::Length({m[0], m[3], m[6]});
    myBuffer += "transform $-1 -1 ";
    for (std::size_t row = 0; row < 3; ++row) {
        Vector({m[row] / factor, m[3 + row] / factor, m[6 + row] / factor});
    }
    const Vector3& to = placement.translation;
    Vector({to[0] / myMillimetres, to[1] / myMillimetres, to[2] / myMillimetres});
    Number(factor);
    Word("rotate no_reflect no_shear");
    End();
}

void AcisWriter::WriteRegion(const Region& region)
{
    if (region.body != Nothing) {
        Begin("lump", Nothing);
        Pointer(region.nextLump);
        Pointer(region.shell);
        Pointer(region.body);
        End();
    }
    Begin("shell", Nothing);
    Pointer(region.nextShell);
    Pointer(Nothing);
    Pointer(region.faces);
    Pointer(Nothing);
    Pointer(region.lump);
    End();
    WriteFaces(region);
    WriteEdges(region);
    for (const PolygonBody::Face& face : region.polygons->faces) {
        const PolygonBody::Coedge& side = region.polygons->coedges[region.polygons->loops[face.first].first];
        Begin("plane-surface", Nothing);
        Vector(region.At(side.from));
        Vector(face.normal);
        Vector(SideOf(*region.part, *region.polygons, side).direction);
        Word("forward_v I I I I");
        End();
    }
    for (std::size_t i = 0; i < region.polygons->faces.size(); ++i) {
        const PolygonBody::Face& face = region.polygons->faces[i];
        if (region.part->IsColoured(face)) {
            WriteColour(region.faces + i, Nothing, *region.part->colours[face.set]);
        }
    }
}

void AcisWriter::WriteFaces(const Region& region)
{
    const PolygonBody& polygons = *region.polygons;
    std::size_t attribute = region.attributes;
    for (std::size_t i = 0; i < polygons.faces.size(); ++i) {
        const PolygonBody::Face& face = polygons.faces[i];
        Begin("face", region.part->IsColoured(face) ? attribute++ : Nothing);
        Pointer(i + 1 < polygons.faces.size() ? region.faces + i + 1 : Nothing);
        Pointer(region.loops + face.first);
        Pointer(region.shell);
        Pointer(Nothing);
        Pointer(region.surfaces + i);
        Word(region.isClosed ? "forward single" : "forward double out");
        End();
    }
    for (std::size_t i = 0; i < polygons.loops.size(); ++i) {
        const PolygonBody::Loop& loop = polygons.loops[i];
        Begin("loop", Nothing);
        Pointer(i + 1 < polygons.faces[loop.face].last ? region.loops + i + 1 : Nothing);
        Pointer(region.coedges + loop.first);
        Pointer(region.faces + loop.face);
        End();
    }
    for (std::size_t i = 0; i < polygons.coedges.size(); ++i) {
        const PolygonBody::Coedge& coedge = polygons.coedges[i];
        const PolygonBody::Loop& loop = polygons.loops[coedge.loop];
        Begin("coedge", Nothing);
        Pointer(region.coedges + (i + 1 < loop.last ? i + 1 : loop.first));
        Pointer(region.coedges + (i > loop.first ? i : loop.last) - 1);
        Pointer(coedge.partner == PolygonBody::NoIndex ? Nothing : region.coedges + coedge.partner);
        Pointer(region.edges + 2 * coedge.edge);
        const bool isForward = polygons.coedges[polygons.edges[coedge.edge]].from == coedge.from;
        Word(isForward ? "forward" : "reversed");
        Pointer(region.loops + coedge.loop);
        Pointer(Nothing);
        End();
    }
}

void AcisWriter::WriteEdges(const Region& region)
{
    const PolygonBody& polygons = *region.polygons;
    for (std::size_t i = 0; i < polygons.edges.size(); ++i) {
        const PolygonBody::Coedge& coedge = polygons.coedges[polygons.edges[i]];
        const mesh::Side side = SideOf(*region.part, polygons, coedge);
        WriteEdge(Nothing, region.vertexes + 2 * std::size_t{coedge.from},
                  region.vertexes + 2 * std::size_t{coedge.to}, region.coedges + polygons.edges[i],
                  region.At(coedge.from), side.direction, side.length);
    }
    for (std::size_t i = 0; i < polygons.vertices.size(); ++i) {
        WriteVertex(region.edges + 2 * polygons.edgeOf[i], region.At(static_cast<std::uint32_t>(i)));
    }
}

/// The edge and its line, which is the record behind it.
void AcisWriter::WriteEdge(std::size_t attribute, std::size_t start, std::size_t end, std::size_t coedge,
                           const Vector3& from, const Vector3& direction, double length)
{
    Begin("edge", attribute);
    Pointer(start);
    Number(0.);
    Pointer(end);
    Number(length);
    Pointer(coedge);
    Pointer(myNext + 1);
    Word("forward");
    Text("unknown");
    End();
    Begin("straight-curve", Nothing);
    Vector(from);
    Vector(direction);
    Word("I I");
    End();
}

/// The vertex and its point, which is the record behind it.
void AcisWriter::WriteVertex(std::size_t edge, const Vector3& place)
{
    Begin("vertex", Nothing);
    Pointer(edge);
    Pointer(myNext + 1);
    End();
    Begin("point", Nothing);
    Vector(place);
    End();
}

void AcisWriter::WriteColour(std::size_t owner, std::size_t next, const ModelData_Color& colour)
{
    myBuffer += "rgb_color-st-attrib $-1 -1 ";
    Pointer(next);
    Pointer(Nothing);
    Pointer(owner);
    for (const float value : {colour.R(), colour.G(), colour.B()}) {
        Number(std::isfinite(value) ? std::clamp(value, 0.F, 1.F) : 0.F);
    }
    End();
}

void AcisWriter::WriteName(std::size_t owner, std::size_t before, const Base_UTF16String& name)
{
    myBuffer += "string_attrib-name_attrib-gen-attrib $-1 -1 ";
    Pointer(Nothing);
    Pointer(before);
    Pointer(owner);
    Word("keep keep_kept ignore copy"); // what becomes of it when a modeller splits, merges, moves its owner
    Text("name");
    std::string text = name.ToUTF8();
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20; }, ' ');
    Text(text);
    End();
}

void AcisWriter::Begin(const char* type, std::size_t attribute)
{
    myBuffer += type;
    myBuffer += ' ';
    Pointer(attribute);
    myBuffer += "-1 $-1 ";
}

void AcisWriter::Pointer(std::size_t record)
{
    myBuffer += '$';
    myBuffer += record == Nothing ? "-1" : std::to_string(record);
    myBuffer += ' ';
}

void AcisWriter::Vector(const Vector3& vector)
{
    for (const double value : vector) {
        Number(value);
    }
}

void AcisWriter::Word(std::string_view word)
{
    myBuffer += word;
    myBuffer += ' ';
}

void AcisWriter::Text(std::string_view text)
{
    myBuffer += '@' + std::to_string(text.size()) + ' ';
    Word(text);
}

void AcisWriter::End()
{
    myBuffer += "#\n";
    ++myNext;
    if (myBuffer.size() >= PieceSize) {
        myIsWhole = myIsWhole && mySink.Write(myBuffer);
        myBuffer.clear();
    }
}

} // namespace cadex::acis
