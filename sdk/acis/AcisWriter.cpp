#include "sdk/acis/AcisWriter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <vector>

#include "sdk/text/LengthUnits.h"

namespace cadex::acis {

using mesh::PolygonBody;

namespace {

constexpr std::size_t Nothing = static_cast<std::size_t>(-1); ///< points nowhere
constexpr std::size_t PieceSize = std::size_t{1} << 18;
constexpr double Tolerance = 1e-6; ///< of the header, in the file's unit
constexpr double FlatWithin = 1e-7;

} // namespace

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
        bodies += mesh::HasTriangles(placed.part) ? 1U : 0U;
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

/// A part whose triangles all have no area is an empty body.
void AcisWriter::WritePart(const mesh::PlacedPart& placed)
{
    if (!mesh::HasTriangles(placed.part) || !myIsWhole) {
        return;
    }
    // a movement stays one, so that equal parts have equal records; anything else goes into the points
    const bool isMoved = mesh::IsMovement(placed.placement) && !mesh::IsIdentity(placed.placement);
    const double scale = 1 / myMillimetres;
    const mesh::FlatPart part(placed,
                              mesh::Compose({{scale, 0, 0, 0, scale, 0, 0, 0, scale}, {}},
                                            isMoved ? mesh::Affine() : placed.placement),
                              FlatWithin);
    std::vector<Region> regions;
    const std::size_t body = myNext;
    const std::optional<ModelData_Color>& colour = part.BodyColour();
    const bool hasName = !placed.name.IsEmpty();
    const std::size_t colourRecord = body + 1;
    const std::size_t nameRecord = body + 1 + (colour ? 1 : 0);
    const std::size_t transform = nameRecord + (hasName ? 1 : 0);
    std::size_t next = transform + (isMoved ? 1 : 0);
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
    Begin("body", colour ? colourRecord : hasName ? nameRecord : Nothing);
    Pointer(firstLump);
    Pointer(Nothing);
    Pointer(isMoved ? transform : Nothing);
    End();
    if (colour) {
        WriteColour(body, hasName ? nameRecord : Nothing, *colour);
    }
    if (hasName) {
        WriteName(body, colour ? colourRecord : Nothing, placed.name);
    }
    if (isMoved) {
        WriteTransform(placed.placement);
    }
    for (const Region& region : regions) {
        WriteRegion(region);
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
        Begin("edge", Nothing);
        Pointer(region.vertexes + 2 * std::size_t{coedge.from});
        Number(0.);
        Pointer(region.vertexes + 2 * std::size_t{coedge.to});
        Number(side.length);
        Pointer(region.coedges + polygons.edges[i]);
        Pointer(region.edges + 2 * i + 1);
        Word("forward");
        Text("unknown");
        End();
        Begin("straight-curve", Nothing);
        Vector(region.At(coedge.from));
        Vector(side.direction);
        Word("I I");
        End();
    }
    for (std::size_t i = 0; i < polygons.vertices.size(); ++i) {
        Begin("vertex", Nothing);
        Pointer(region.edges + 2 * polygons.edgeOf[i]);
        Pointer(region.vertexes + 2 * i + 1);
        End();
        Begin("point", Nothing);
        Vector(region.At(static_cast<std::uint32_t>(i)));
        End();
    }
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
