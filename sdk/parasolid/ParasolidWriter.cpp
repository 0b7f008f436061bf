#include "sdk/parasolid/ParasolidWriter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/parasolid/XtBodyPlan.h"
#include "sdk/parasolid/XtSchema.h"

namespace cadex::parasolid {

using mesh::PolygonBody;

namespace {

constexpr std::size_t PieceSize = std::size_t{1} << 18;
constexpr double FlatWithin = 1e-9; ///< metres; the format's own resolution is ten times that
constexpr double SizeBox = 1e3;
constexpr double Resolution = 1e-8;
constexpr std::size_t LineLength = 80;

constexpr int SolidBody = 1;
constexpr int SheetBody = 3;
constexpr int HighestInstance = 1 << 24; ///< no file has more

/// Of an attribute: its name, type and who may have it (assemblies, instances, bodies ... faces).
struct AttributeKind
{
    const char* name;
    int type;
    const char* owners;
    int field; ///< 2: reals, 3: characters, 10: unicode
    const char* actions;
};
enum Kind : std::size_t
{
    BodyColour,
    FaceColour,
    Name,
    UnicodeName,
    KindCount
};
constexpr AttributeKind Kinds[KindCount] = {
    {"SDL/TYSA_COLOUR_2", 8040, "TTTFFFFFFFFFFF", 2, "0 0 0 0 3 5 0 0 "},
    {"SDL/TYSA_COLOUR", 8001, "FFFFTFTFFFFFFF", 2, "0 0 0 0 3 5 0 0 "},
    {"SDL/TYSA_NAME", 8017, "TTTTTTTTTTTTTF", 3, "0 0 0 0 0 0 0 0 "},
    {"SDL/TYSA_UNAME", 8038, "TTTTTTTTTTTTTF", 10, "0 0 0 0 0 0 0 0 "},
};

mesh::FlatPart InMetres(const mesh::PlacedPart& placed)
{
    constexpr double Scale = 1e-3; // metres in a millimetre
    return {placed, mesh::Compose({{Scale, 0, 0, 0, Scale, 0, 0, 0, Scale}, {}}, placed.placement),
            FlatWithin};
}

/// Control characters become blanks.
std::u16string NameOf(const Base_UTF16String& name)
{
    std::u16string text;
    for (std::size_t i = 0; i < name.Length(); ++i) {
        const auto unit = static_cast<char16_t>(name.Data()[i]);
        text.push_back(unit < 0x20 ? u' ' : unit);
    }
    return text;
}

} // namespace

ParasolidWriter::ParasolidWriter(text::ByteSink& sink, const ModelData_Model& model, Base_LengthUnit)
    : mySink(sink), myModel(model)
{
}

/// The shortest text that reads back as the same number.
template <typename Number>
void ParasolidWriter::Real(Number value)
{
    char text[32];
    myBuffer.append(text, std::to_chars(text, text + sizeof(text), value).ptr);
    myBuffer += ' ';
}

bool ParasolidWriter::Write()
{
    WriteHeader();
    std::size_t parts = 0;
    mesh::ForEachPlacedPart(
        myModel, [&](const mesh::PlacedPart& placed) { parts += mesh::HasTriangles(placed.part) ? 1U : 0U; });
    bool isWritten = false;
    if (parts == 1) {
        mesh::ForEachPlacedPart(myModel, [&](const mesh::PlacedPart& placed) {
            if (!mesh::HasTriangles(placed.part)) {
                return;
            }
            const mesh::FlatPart part = InMetres(placed);
            if (part.bodies.size() == 1 && HasRoom(part.bodies.front())) {
                XtBodyPlan plan(part, part.bodies.front());
                plan.name = NameOf(placed.name);
                myNext = plan.Place(myNext);
                WriteBody(plan);
                isWritten = true;
            }
        });
    }
    if (!isWritten) {
        WriteAssembly();
    }
    Begin(1, 0);
    Flush(true);
    return myIsWhole;
}

/// Without the time of writing, so that equal models give equal files.
void ParasolidWriter::WriteHeader()
{
    const std::string_view lines =
        "**ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz**************************\n"
        "**PARASOLID !\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~0123456789**************************\n"
        "**PART1;\n"
        "APPL=cadex open engine;\n"
        "FORMAT=text;\n"
        "GUISE=transmit;\n"
        "**PART2;\n"
        "SCH=SCH_1300000_13006;\n"
        "USFLD_SIZE=0;\n"
        "**PART3;\n"
        "**END_OF_HEADER*****************************************************************\n";
    myIsWhole = mySink.Write(lines);
    myBuffer += "T51 : TRANSMIT FILE created by modeller version 130000017 SCH_1300000_13006";
    Put(0); // user fields
}

void ParasolidWriter::WriteAssembly()
{
    const int root = myNext++;
    const int first = myNext;
    constexpr int Collective = 1;
    Begin(type::Assembly, root);
    Put({HighestInstance, 0, 0, 0, 0, 0, 0, 0});
    Real(SizeBox);
    Real(Resolution);
    Put({0, 0, 0, 1, 0, Collective, first});
    mesh::ForEachPlacedPart(myModel, [&](const mesh::PlacedPart& placed) { WritePart(placed); });
    if (myInstance != 0) {
        WriteInstance(0, true);
    }
}

/// A part whose triangles all have no area is left out.
void ParasolidWriter::WritePart(const mesh::PlacedPart& placed)
{
    if (!mesh::HasTriangles(placed.part) || !myIsWhole) {
        return;
    }
    const mesh::FlatPart part = InMetres(placed);
    for (const mesh::FlatBody& source : part.bodies) {
        if (!HasRoom(source)) {
            return;
        }
        XtBodyPlan plan(part, source);
        plan.name = NameOf(placed.name);
        plan.instance = myNext++;
        if (myInstance != 0) {
            WriteInstance(plan.instance, false);
        }
        myNext = plan.Place(myNext);
        myInstance = plan.instance;
        myInstanceBody = plan.body;
        WriteBody(plan);
    }
}

/// Whether the body's nodes can be numbered.
bool ParasolidWriter::HasRoom(const mesh::FlatBody& body)
{
    std::size_t nodes = 0;
    for (const PolygonBody& shell : body.shells) {
        nodes += 4 * shell.faces.size() + shell.loops.size() + 2 * shell.coedges.size() +
                 2 * shell.edges.size() + 2 * shell.vertices.size() + 100;
    }
    if (nodes > static_cast<std::size_t>(std::numeric_limits<int>::max() - myNext)) {
        internal::Reports::Add(internal::Report::Kind::Refused, "more triangles than the format can number");
        myIsWhole = false;
    }
    return myIsWhole;
}

/// The one that waits: `next` is the one behind it.
void ParasolidWriter::WriteInstance(int next, bool isLast)
{
    constexpr int Positive = 1;
    constexpr int Root = 1;
    Begin(type::Instance, myInstance);
    Put({++myInstances, 0, Positive, myInstanceBody, 0, Root, isLast ? 0 : next, myBefore, 0, 0});
    myBefore = myInstance;
}

void ParasolidWriter::WriteBody(const XtBodyPlan& plan)
{
    myNodeId = 0;
    const bool isClosed = plan.source.isClosed;
    Begin(type::Body, plan.body);
    Put({plan.highestId, plan.LookCount() > 0 && (plan.HasColour() || plan.HasName()) ? plan.looks : 0,
         plan.LookCount() > 0 ? plan.chains : 0, 0, 0, 0, 0});
    Real(SizeBox);
    Real(Resolution);
    Put({plan.instance, 0, 0, 1, 0, isClosed ? SolidBody : SheetBody, 1, plan.shells, plan.planes, plan.lines,
         plan.points, plan.regions, plan.edges, plan.vertices});
    WriteRegions(plan);
    for (std::size_t shell = 0; shell < plan.source.shells.size(); ++shell) {
        WriteFaces(plan, shell);
        WriteFins(plan, shell);
        WriteEdges(plan, shell);
        WriteVertices(plan, shell);
    }
    WriteAttributes(plan);
}

void ParasolidWriter::WriteRegions(const XtBodyPlan& plan)
{
    const int count = plan.shells - plan.regions;
    for (int i = 0; i < count; ++i) {
        // the void around the body, the solid, the voids of its cavities
        const bool isSolid = i == 1;
        const int shell =
            isSolid ? plan.SolidShell(0) : plan.VoidShell(static_cast<std::size_t>(std::max(0, i - 1)));
        Begin(type::Region, plan.regions + i);
        Lead();
        Put({plan.body, i + 1 < count ? plan.regions + i + 1 : 0, i > 0 ? plan.regions + i - 1 : 0, shell});
        Letters(isSolid ? "S" : "V");
    }
    const int shells = plan.ShellCount();
    for (int i = 0; i < shells; ++i) {
        const int face = plan.faces + plan.offsets[static_cast<std::size_t>(i)].faces;
        const bool isClosed = plan.source.isClosed;
        Begin(type::Shell, plan.shells + i);
        Lead();
        Put({plan.body, i + 1 < shells && isClosed ? plan.shells + i + 1 : 0, face, 0, 0,
             isClosed ? plan.regions + 1 : plan.regions, isClosed ? 0 : face});
    }
    for (int i = 0; i < shells && plan.source.isClosed; ++i) {
        Begin(type::Shell, plan.VoidShell(static_cast<std::size_t>(i)));
        Lead();
        Put({0, 0, 0, 0, 0, i == 0 ? plan.regions : plan.regions + 1 + i,
             plan.faces + plan.offsets[static_cast<std::size_t>(i)].faces});
    }
}

void ParasolidWriter::WriteFaces(const XtBodyPlan& plan, std::size_t shell)
{
    const PolygonBody& polygons = plan.source.shells[shell];
    const XtBodyPlan::Offsets& before = plan.offsets[shell];
    int coloured = 0;
    for (std::size_t i = 0; i < shell; ++i) {
        for (const PolygonBody::Face& face : plan.source.shells[i].faces) {
            coloured += plan.part.IsColoured(face) ? 1 : 0;
        }
    }
    const int count = static_cast<int>(polygons.faces.size());
    for (int i = 0; i < count; ++i) {
        const PolygonBody::Face& face = polygons.faces[static_cast<std::size_t>(i)];
        const int index = plan.faces + before.faces + i;
        const int next = i + 1 < count ? index + 1 : 0;
        const int previous = i > 0 ? index - 1 : 0;
        const int plane = plan.planes + before.faces + i;
        Begin(type::Face, index);
        Lead(plan.part.IsColoured(face) ? plan.FaceLooks() + 2 * coloured++ : 0);
        Letters("?"); // exact
        Put({next, previous, plan.loops + before.loops + static_cast<int>(face.first), plan.SolidShell(shell),
             plane});
        Letters("+");
        Put({0, 0, next, previous, plan.VoidShell(shell)});
        const PolygonBody::Coedge& side = polygons.coedges[polygons.loops[face.first].first];
        const int place = before.faces + i;
        Begin(type::Plane, plane);
        Lead();
        Put({index, place + 1 < plan.Total().faces ? plane + 1 : 0, place > 0 ? plane - 1 : 0, 0});
        Letters("+");
        Vector(plan.part.At(polygons, side.from));
        Vector(face.normal);
        Vector(SideOf(plan.part, polygons, side).direction);
    }
    for (std::size_t i = 0; i < polygons.loops.size(); ++i) {
        const PolygonBody::Loop& loop = polygons.loops[i];
        const int index = plan.loops + before.loops + static_cast<int>(i);
        Begin(type::Loop, index);
        Lead();
        Put({plan.fins + before.fins + static_cast<int>(loop.first),
             plan.faces + before.faces + static_cast<int>(loop.face),
             i + 1 < polygons.faces[loop.face].last ? index + 1 : 0});
    }
}

/// Where an edge has one fin alone, another without a loop stands beside it.
void ParasolidWriter::WriteFins(const XtBodyPlan& plan, std::size_t shell)
{
    const PolygonBody& polygons = plan.source.shells[shell];
    const XtBodyPlan::Offsets& before = plan.offsets[shell];
    const int base = plan.fins + before.fins;
    int lonely = plan.lonely + before.lonely;
    // chains of the fins that end in a vertex; WriteVertices begins with the last one met
    std::vector<int> last(polygons.vertices.size());
    for (std::size_t i = 0; i < polygons.coedges.size(); ++i) {
        const PolygonBody::Coedge& coedge = polygons.coedges[i];
        const PolygonBody::Loop& loop = polygons.loops[coedge.loop];
        const int index = base + static_cast<int>(i);
        const int edge = plan.edges + before.edges + static_cast<int>(coedge.edge);
        const int vertices = plan.vertices + before.vertices;
        const bool isForward = polygons.coedges[polygons.edges[coedge.edge]].from == coedge.from;
        const bool isLonely = XtBodyPlan::IsLonely(coedge);
        Begin(type::Fin, index);
        Put({0, plan.loops + before.loops + static_cast<int>(coedge.loop),
             base + static_cast<int>(i + 1 < loop.last ? i + 1 : loop.first),
             base + static_cast<int>((i > loop.first ? i : loop.last) - 1),
             vertices + static_cast<int>(coedge.to),
             isLonely ? lonely : base + static_cast<int>(coedge.partner), edge, 0,
             std::exchange(last[coedge.to], index)});
        Letters(isForward ? "+" : "-");
        if (isLonely) {
            Begin(type::Fin, lonely);
            Put({0, 0, 0, 0, vertices + static_cast<int>(coedge.from), index, edge, 0,
                 std::exchange(last[coedge.from], lonely)});
            Letters(isForward ? "-" : "+");
            ++lonely;
        }
    }
    for (std::size_t i = 0; i < polygons.vertices.size(); ++i) {
        const int place = before.vertices + static_cast<int>(i);
        const int index = plan.vertices + place;
        const bool isLast = place + 1 == plan.Total().vertices;
        Begin(type::Vertex, index);
        Lead();
        Put({last[i], place > 0 ? index - 1 : 0, isLast ? 0 : index + 1, plan.points + place});
        Letters("?");
        Put(plan.body);
    }
}

void ParasolidWriter::WriteEdges(const XtBodyPlan& plan, std::size_t shell)
{
    const PolygonBody& polygons = plan.source.shells[shell];
    const XtBodyPlan::Offsets& before = plan.offsets[shell];
    for (std::size_t i = 0; i < polygons.edges.size(); ++i) {
        const PolygonBody::Coedge& coedge = polygons.coedges[polygons.edges[i]];
        const int place = before.edges + static_cast<int>(i);
        const int index = plan.edges + place;
        const int line = plan.lines + place;
        const bool isFirst = place == 0;
        const bool isLast = place + 1 == plan.Total().edges;
        Begin(type::Edge, index);
        Lead();
        Letters("?");
        Put({plan.fins + before.fins + static_cast<int>(polygons.edges[i]), isFirst ? 0 : index - 1,
             isLast ? 0 : index + 1, line, 0, 0, plan.body});
        Begin(type::Line, line);
        Lead();
        Put({index, isLast ? 0 : line + 1, isFirst ? 0 : line - 1, 0});
        Letters("+");
        Vector(plan.part.At(polygons, coedge.from));
        Vector(SideOf(plan.part, polygons, coedge).direction);
    }
}

void ParasolidWriter::WriteVertices(const XtBodyPlan& plan, std::size_t shell)
{
    const PolygonBody& polygons = plan.source.shells[shell];
    for (std::size_t i = 0; i < polygons.vertices.size(); ++i) {
        const int place = plan.offsets[shell].vertices + static_cast<int>(i);
        const int index = plan.points + place;
        const bool isLast = place + 1 == plan.Total().vertices;
        Begin(type::Point, index);
        Lead();
        Put({plan.vertices + place, isLast ? 0 : index + 1, place > 0 ? index - 1 : 0});
        Vector(plan.part.At(polygons, static_cast<std::uint32_t>(i)));
    }
}

/// Definitions are written with the first attribute of their kind. Those of a body are chained, those of its
/// faces by their kind.
void ParasolidWriter::WriteAttributes(const XtBodyPlan& plan)
{
    if (plan.LookCount() == 0) {
        return;
    }
    const bool isPlain = std::all_of(plan.name.begin(), plan.name.end(), [](char16_t c) { return c < 0x7F; });
    std::vector<int> heads;
    const auto define = [&](Kind kind, int head) {
        heads.push_back(head);
        if (myDefinitions[kind] == 0) {
            myDefinitions[kind] = myNext;
            WriteDefinition(kind);
        }
        return myDefinitions[kind];
    };
    const Kind nameKind = isPlain ? Name : UnicodeName;
    const int colour = plan.HasColour() ? define(BodyColour, plan.looks) : 0;
    const int name = plan.HasName() ? define(nameKind, plan.NameLook()) : 0;
    const int faceColour = plan.colouredFaces > 0 ? define(FaceColour, plan.FaceLooks()) : 0;
    WriteChains(plan, heads);
    if (plan.HasColour()) {
        Begin(type::Attribute, plan.looks, 1);
        Put({++myNodeId, colour, plan.body, plan.HasName() ? plan.NameLook() : 0, 0, 0, 0, plan.looks + 1});
        WriteColour(plan.looks + 1, *plan.part.BodyColour());
    }
    if (plan.HasName()) {
        const int look = plan.NameLook();
        Begin(type::Attribute, look, 1);
        Put({++myNodeId, name, plan.body, 0, plan.HasColour() ? plan.looks : 0, 0, 0, look + 1});
        WriteName(look + 1, plan.name, isPlain);
    }
    int coloured = 0;
    for (std::size_t shell = 0; shell < plan.source.shells.size(); ++shell) {
        const std::vector<PolygonBody::Face>& faces = plan.source.shells[shell].faces;
        for (std::size_t i = 0; i < faces.size(); ++i) {
            if (!plan.part.IsColoured(faces[i])) {
                continue;
            }
            const int look = plan.FaceLooks() + 2 * coloured;
            ++coloured;
            Begin(type::Attribute, look, 1);
            Put({++myNodeId, faceColour, plan.faces + plan.offsets[shell].faces + static_cast<int>(i), 0, 0,
                 coloured < plan.colouredFaces ? look + 2 : 0, coloured > 1 ? look - 2 : 0, look + 1});
            WriteColour(look + 1, *plan.part.colours[faces[i].set]);
        }
    }
}

void ParasolidWriter::WriteDefinition(std::size_t kind)
{
    const AttributeKind& source = Kinds[kind];
    const int definition = myNext++;
    const int name = myNext++;
    Begin(type::AttributeDefinition, definition, 1);
    Put({0, name, source.type});
    Letters(source.actions);
    Put(0);
    Letters(source.owners);
    Put(source.field);
    const std::string_view text = source.name;
    Begin(type::AttributeName, name, text.size());
    Letters(text);
}

/// The list of the first attribute of each kind.
void ParasolidWriter::WriteChains(const XtBodyPlan& plan, const std::vector<int>& heads)
{
    constexpr int OfAttributes = 4;
    constexpr int BlockLength = 20;
    const int count = static_cast<int>(heads.size());
    const int block = plan.chains + 1;
    Begin(type::List, plan.chains);
    Put({0, plan.body, 0, 0, OfAttributes, count, BlockLength, 1, block, block, 1});
    Letters("T");
    Begin(type::ListBlock, block, BlockLength);
    Put({count, 0});
    for (int i = 0; i < BlockLength; ++i) {
        Put(i < count ? heads[static_cast<std::size_t>(i)] : 0);
    }
}

void ParasolidWriter::WriteColour(int index, const ModelData_Color& colour)
{
    Begin(type::Reals, index, 3);
    for (const float value : {colour.R(), colour.G(), colour.B()}) {
        Real(std::isfinite(value) ? std::clamp(value, 0.F, 1.F) : 0.F);
    }
}

void ParasolidWriter::WriteName(int index, const std::u16string& name, bool isPlain)
{
    Begin(isPlain ? type::Characters : type::Unicode, index, name.size());
    for (const char16_t unit : name) {
        if (isPlain) {
            const char letter = static_cast<char>(unit);
            Letters(letter == '\\' ? std::string_view("\\\\") : std::string_view(&letter, 1));
        } else {
            Put(unit);
        }
    }
}

/// Type, length where the type has one, index.
void ParasolidWriter::Begin(int type, int index, std::size_t length)
{
    Put(type);
    if (length > 0) {
        Put(static_cast<int>(length));
    }
    Put(index);
    if (myBuffer.size() >= PieceSize) {
        Flush(false);
    }
}

void ParasolidWriter::Lead(int attribute)
{
    Put({++myNodeId, attribute});
}

void ParasolidWriter::Put(int value)
{
    char text[16];
    myBuffer.append(text, std::to_chars(text, text + sizeof(text), value).ptr);
    myBuffer += ' ';
}

void ParasolidWriter::Put(std::initializer_list<int> values)
{
    for (const int value : values) {
        Put(value);
    }
}

void ParasolidWriter::Vector(const mesh::Vector3& vector)
{
    for (const double value : vector) {
        Real(value);
    }
}

void ParasolidWriter::Letters(std::string_view letters)
{
    myBuffer += letters;
}

/// Lines of a fixed length, of which the last of a piece waits for the next piece.
void ParasolidWriter::Flush(bool isEnd)
{
    std::string lines;
    std::size_t at = 0;
    while (myBuffer.size() - at >= LineLength || (isEnd && at < myBuffer.size())) {
        const std::size_t length = std::min(LineLength, myBuffer.size() - at);
        lines.append(myBuffer, at, length);
        lines += '\n';
        at += length;
    }
    myBuffer.erase(0, at);
    myIsWhole = myIsWhole && mySink.Write(lines) && internal::Progress::GoesOn();
}

} // namespace cadex::parasolid
