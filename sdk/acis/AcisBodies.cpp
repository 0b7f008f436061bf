#include "sdk/acis/AcisBodies.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <unordered_map>

#include <Geom_BSplineSurface.hxx>
#include <Geom_ConicalSurface.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_ToroidalSurface.hxx>
#include <Standard_Failure.hxx>

#include "sdk/acis/AcisAttributes.h"
#include "sdk/acis/AcisGeometry.h"
#include "sdk/acis/AcisTwins.h"
#include "sdk/brep/Shells.h"

namespace cadex::acis {

namespace {

std::size_t At(int index)
{
    return static_cast<std::size_t>(index);
}

/// The fields of a face that are used.
struct FileFace
{
    int record = None;
    int loop = None;
    int shell = None;
    int surface = None;
    bool isReversed = false;
    bool isDouble = false;
};

/// The records of one body.
struct Members
{
    std::vector<FileFace> faces;
    std::vector<int> wireCoedges;
};

/// Describes the faces and wires of one body.
class BodyDescriber
{
public:
    BodyDescriber(const Records& records, GeometryReader& geometry, AttributeTable& attributes,
                  std::vector<bool>& seen, FileBody& body)
        : myRecords(records),
          myGeometry(geometry),
          myAttributes(attributes),
          mySeen(seen),
          myBody(body),
          myTarget(body.description)
    {
    }

    void Describe(const Members& members)
    {
        for (const FileFace& face : members.faces) {
            AddFace(face);
        }
        for (const int coedge : members.wireCoedges) {
            AddWireEdge(coedge);
        }
        FinishShells();
    }

private:
    struct EdgeEntry
    {
        int index = brep::None;
        bool isAligned = true;     ///< runs as the file's edge
        bool isDegenerate = false; ///< a point
        int vertex = brep::None;   ///< of a point
    };
    struct ShellEntry
    {
        int lump = None;
        bool isSingle = true;
        bool isWhole = true;
    };

    bool Is(int record, std::string_view base) const
    {
        return record != None && myRecords.Base(At(record)) == base;
    }

    /// True only the first time.
    bool See(int record)
    {
        const bool isNew = !mySeen[At(record)];
        mySeen[At(record)] = true;
        return isNew;
    }

    int VertexOf(int record)
    {
        const auto [place, isNew] = myVertices.try_emplace(record, brep::None);
        if (!isNew || !Is(record, "vertex")) {
            return place->second;
        }
        Fields fields = myRecords.Own(At(record));
        int point = None;
        while (!fields.AtEnd()) { // the last pointer; versions differ in what stands before it
            if (fields.IsPointer()) {
                const int target = fields.Pointer();
                point = target != None && myRecords.Type(At(target)) == "point" ? target : point;
            } else {
                fields.Skip(1);
            }
        }
        if (const auto place3d = myGeometry.PointOf(point)) {
            place->second = myTarget.AddVertex(*place3d);
        }
        return place->second;
    }

    const EdgeEntry& EdgeOf(int record)
    {
        const auto [place, isNew] = myEdges.try_emplace(record);
        if (isNew && Is(record, "edge")) {
            place->second = ReadEdge(record);
        }
        return place->second;
    }

    EdgeEntry ReadEdge(int record)
    {
        EdgeEntry entry;
        Fields fields = myRecords.Own(At(record));
        const int start = VertexOf(fields.Pointer());
        const double first = fields.IsNumber() ? fields.Number() : 0;
        const int end = VertexOf(fields.Pointer());
        const double last = fields.IsNumber() ? fields.Number() : 0;
        fields.Skip(1); // a coedge
        const int curveRecord = fields.Pointer();
        const bool isReversed = fields.IsReversed();
        if (start == brep::None || end == brep::None) {
            return entry;
        }
        const Curve& curve = myGeometry.CurveOf(curveRecord);
        if (curve.curve.IsNull()) {
            entry.isDegenerate = curveRecord == None && start == end;
            entry.vertex = start;
            if (curveRecord == None && start != end) {
                entry.index = myTarget.AddLine(start, end);
            }
            return entry;
        }
        const double factor = isReversed ? -curve.factor : curve.factor;
        entry.isAligned = factor > 0;
        brep::Edge edge;
        edge.curve = curve.curve;
        edge.start = entry.isAligned ? start : end;
        edge.end = entry.isAligned ? end : start;
        edge.record = At(record);
        SetRange(edge, factor * first, factor * last);
        entry.index = myTarget.AddEdge(std::move(edge));
        return entry;
    }

    /// Takes the file's parameters where they lead to the vertices; else the builder finds some.
    void SetRange(brep::Edge& edge, double first, double last)
    {
        const double near = 1e-3 * std::max(1., myRecords.Head().millimetres);
        if (first > last) {
            std::swap(first, last);
        }
        if (!std::isfinite(first) || !std::isfinite(last) || !(last > first)) {
            return;
        }
        brep::Vertex& start = myTarget.vertices[At(edge.start)];
        brep::Vertex& end = myTarget.vertices[At(edge.end)];
        const double slack = 1e-9 * std::max(1., last - first);
        const double low = edge.curve->FirstParameter();
        const double high = edge.curve->LastParameter();
        const auto clamp = [&](double value) {
            return std::abs(value - low) < slack ? low : std::abs(value - high) < slack ? high : value;
        };
        first = clamp(first);
        last = clamp(last);
        const double atStart = edge.curve->Value(first).Distance(start.point);
        const double atEnd = edge.curve->Value(last).Distance(end.point);
        if (!(atStart < near) || !(atEnd < near)) {
            return;
        }
        edge.first = first;
        edge.last = last;
        start.tolerance = std::max(start.tolerance, atStart);
        end.tolerance = std::max(end.tolerance, atEnd);
        edge.tolerance = std::max({edge.tolerance, atStart, atEnd});
    }

    void AddFace(const FileFace& source)
    {
        brep::Face face;
        const Surface& surface = myGeometry.SurfaceOf(source.surface);
        Handle(Geom_Surface) geometry = surface.surface;
        const auto shell = myShells.find(source.shell);
        bool isSound = (!geometry.IsNull() || surface.cone) && AddLoops(source, surface, face);
        int number = brep::None;
        if (isSound && surface.cone) {
            geometry = ConeOf(*surface.cone, face);
            isSound = !geometry.IsNull();
        }
        if (isSound && face.loops.empty()) {
            isSound = IsBounded(geometry);
        }
        const int shellNumber = shell != myShells.end() ? shell->second : AddShell(source.shell);
        ShellEntry& entry = myShellEntries[At(shellNumber)];
        entry.isSingle = entry.isSingle && !source.isDouble;
        if (!isSound) {
            entry.isWhole = false;
            ++myBody.lostFaces;
            return;
        }
        if (surface.cone) {
            number = myTarget.AddSurface(geometry);
        } else {
            const auto [known, isNew] = mySurfaces.try_emplace(source.surface, brep::None);
            if (isNew) {
                known->second = myTarget.AddSurface(geometry);
            }
            number = known->second;
        }
        face.surface = number;
        face.sameSense = source.isReversed == surface.isReversed;
        face.appearance = myAttributes.LookOf(source.record);
        face.record = At(source.record);
        const int index = myTarget.AddFace(std::move(face));
        myTarget.shells[At(shellNumber)].faces.push_back({index, true});
    }

    static bool IsBounded(const Handle(Geom_Surface) & surface)
    {
        return surface->IsKind(STANDARD_TYPE(Geom_SphericalSurface)) ||
               surface->IsKind(STANDARD_TYPE(Geom_ToroidalSurface)) ||
               surface->IsKind(STANDARD_TYPE(Geom_BSplineSurface));
    }

    bool AddLoops(const FileFace& source, const Surface& surface, brep::Face& face)
    {
        for (int loop = source.loop; loop != None;) {
            if (!Is(loop, "loop") || !See(loop)) {
                return false;
            }
            Fields fields = myRecords.Own(At(loop));
            loop = fields.Pointer();
            if (!AddLoop(fields.Pointer(), surface, face)) {
                return false;
            }
        }
        return true;
    }

    /// Edges that are points are left out. A loop of nothing else stands at the apex of a cone or a pole of
    /// a sphere; elsewhere it says nothing.
    bool AddLoop(int firstCoedge, const Surface& surface, brep::Face& face)
    {
        brep::Loop loop;
        int vertex = brep::None;
        int coedge = firstCoedge;
        do {
            if (!Is(coedge, "coedge") || !See(coedge)) {
                return false;
            }
            Fields fields = myRecords.Own(At(coedge));
            coedge = fields.Pointer();
            fields.Skip(2); // the coedge before, the partner
            const EdgeEntry& edge = EdgeOf(fields.Pointer());
            const bool isReversed = fields.IsReversed();
            if (edge.isDegenerate) {
                vertex = edge.vertex;
            } else if (edge.index != brep::None) {
                loop.uses.push_back({edge.index, isReversed != edge.isAligned, {}});
            } else {
                return false;
            }
        } while (coedge != firstCoedge);
        const bool hasPoles =
            !surface.surface.IsNull() && (surface.surface->IsKind(STANDARD_TYPE(Geom_ConicalSurface)) ||
                                          surface.surface->IsKind(STANDARD_TYPE(Geom_SphericalSurface)));
        if (!loop.uses.empty()) {
            face.loops.push_back(std::move(loop));
        } else if (hasPoles) {
            face.loops.push_back({{}, vertex});
        }
        return true;
    }

    /// The part of an elliptic cone that the edges of a face need.
    Handle(Geom_Surface) ConeOf(const EllipticCone& cone, const brep::Face& face) const
    {
        constexpr int Samples = 8;
        double lowest = 0;
        double highest = 0;
        bool isFirst = true;
        const auto add = [&](const gp_Pnt& point) {
            const double height = gp_Vec(cone.axes.Location(), point).Dot(gp_Vec(cone.axes.Direction()));
            lowest = isFirst ? height : std::min(lowest, height);
            highest = isFirst ? height : std::max(highest, height);
            isFirst = false;
        };
        for (const brep::Loop& loop : face.loops) {
            for (const brep::EdgeUse& use : loop.uses) {
                const brep::Edge& edge = myTarget.edges[At(use.edge)];
                add(myTarget.vertices[At(edge.start)].point);
                add(myTarget.vertices[At(edge.end)].point);
                for (int i = 1; i < Samples && !edge.curve.IsNull(); ++i) {
                    add(edge.curve->Value(edge.first + (edge.last - edge.first) * i / Samples));
                }
            }
        }
        if (face.loops.size() < 2) { // closed by its apex
            add(cone.axes.Location().Translated(gp_Vec(cone.axes.Direction()) *
                                                (-cone.radius / std::tan(cone.angle))));
        }
        try {
            return MakeSurface(cone, lowest, highest);
        } catch (const Standard_Failure&) {
            return {};
        }
    }

    int AddShell(int record)
    {
        const int index = myTarget.AddShell({});
        myShells.emplace(record, index);
        ShellEntry entry;
        if (Is(record, "shell")) {
            Fields fields = myRecords.Own(At(record));
            fields.Skip(4); // the next shell, subshell, face, wire
            entry.lump = fields.Pointer();
        }
        myShellEntries.push_back(entry);
        return index;
    }

    void AddWireEdge(int coedge)
    {
        Fields fields = myRecords.Own(At(coedge));
        fields.Skip(3);
        const int record = fields.Pointer();
        const EdgeEntry& edge = EdgeOf(record);
        if (edge.index == brep::None || !See(record)) {
            return;
        }
        ModelData_Appearance look = myAttributes.LookOf(record);
        myTarget.curves.push_back({edge.index, std::move(look)});
    }

    /// Shells whose faces have a side of material and hang together bound solids; others are sheets.
    void FinishShells()
    {
        brep::ClosedShells closedShells(myTarget);
        std::unordered_map<int, std::vector<int>> solids; // shells by lump
        std::vector<int> lumps;
        for (std::size_t i = 0; i < myTarget.shells.size(); ++i) {
            brep::Shell& shell = myTarget.shells[i];
            if (shell.faces.empty()) {
                continue;
            }
            const auto index = static_cast<int>(i);
            shell.closed = myShellEntries[i].isSingle && myShellEntries[i].isWhole && closedShells.Has(index);
            const int lump = myShellEntries[i].lump;
            if (!shell.closed) {
                myTarget.sheets.push_back(index);
            } else if (lump == None) {
                myTarget.solids.push_back({index, {}});
            } else {
                std::vector<int>& shells = solids[lump];
                if (shells.empty()) {
                    lumps.push_back(lump);
                }
                shells.push_back(index);
            }
        }
        for (const int lump : lumps) {
            myTarget.solids.push_back(brep::SolidOf(myTarget, std::move(solids[lump])));
        }
    }

    const Records& myRecords;
    GeometryReader& myGeometry;
    AttributeTable& myAttributes;
    std::vector<bool>& mySeen;
    FileBody& myBody;
    brep::Description& myTarget;
    std::unordered_map<int, int> myVertices; ///< by record
    std::unordered_map<int, EdgeEntry> myEdges;
    std::unordered_map<int, int> mySurfaces;
    std::unordered_map<int, int> myShells;
    std::vector<ShellEntry> myShellEntries; ///< by shell of the description
};

/// The body above a shell, lump or body.
int BodyOf(const Records& records, int record)
{
    if (record != None && records.Base(At(record)) == "shell") {
        Fields fields = records.Own(At(record));
        fields.Skip(4);
        record = fields.Pointer();
    }
    if (record != None && records.Base(At(record)) == "lump") {
        Fields fields = records.Own(At(record));
        fields.Skip(2);
        record = fields.Pointer();
    }
    return record != None && records.Base(At(record)) == "body" ? record : None;
}

FileFace ReadFace(const Records& records, std::size_t record)
{
    FileFace face;
    face.record = static_cast<int>(record);
    Fields fields = records.Own(record);
    fields.Skip(1); // the next face
    face.loop = fields.Pointer();
    face.shell = fields.Pointer();
    fields.Skip(1); // the subshell
    face.surface = fields.Pointer();
    face.isReversed = fields.IsReversed();
    const std::string_view sides = fields.Next();
    face.isDouble = sides == "double" || sides == "1" || sides == "true";
    return face;
}

/// Points are rows in the file: its matrix is the transpose of ours, and the factor is not in it.
std::optional<Matrix> ReadTransform(const Records& records, int record)
{
    if (record == None || records.Type(At(record)) != "transform") {
        return std::nullopt;
    }
    Fields fields = records.All(At(record));
    std::vector<double> numbers;
    while (!fields.AtEnd() && numbers.size() < 20) {
        if (fields.IsNumber()) {
            numbers.push_back(fields.Number());
        } else if (fields.IsPointer()) {
            numbers.clear();
            fields.Skip(1);
        } else {
            break;
        }
    }
    constexpr std::size_t Count = 13;
    if (numbers.size() < Count) {
        return std::nullopt;
    }
    const double* values = numbers.data() + (numbers.size() - Count);
    const double scale = values[12];
    Matrix matrix;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            matrix[4 * row + column] = values[3 * column + row] * scale;
        }
        matrix[4 * row + 3] = values[9 + row] * records.Head().millimetres;
    }
    const bool isFinite =
        std::all_of(matrix.begin(), matrix.end(), [](double value) { return std::abs(value) < 1e12; });
    return isFinite ? std::optional<Matrix>(matrix) : std::nullopt;
}

} // namespace

std::vector<FileBody> ReadBodies(const Records& records)
{
    std::vector<FileBody> bodies;
    std::vector<Members> members;
    std::unordered_map<int, std::size_t> numberOf; // by record
    const auto numberFor = [&](int record) {
        const auto [place, isNew] = numberOf.try_emplace(record, bodies.size());
        if (isNew) {
            bodies.emplace_back().record = record;
            members.emplace_back();
        }
        return place->second;
    };
    for (std::size_t i = 0; i < records.Size(); ++i) {
        const std::string_view base = records.Base(i);
        if (base == "body") {
            numberFor(static_cast<int>(i));
        } else if (base == "face") {
            const FileFace face = ReadFace(records, i);
            members[numberFor(BodyOf(records, face.shell))].faces.push_back(face);
        } else if (base == "coedge") {
            Fields fields = records.Own(i);
            fields.Skip(5);
            const int owner = fields.Pointer();
            if (owner != None && records.Base(At(owner)) == "wire") {
                Fields wire = records.Own(At(owner));
                wire.Skip(2); // the next wire, a coedge
                members[numberFor(BodyOf(records, wire.Pointer()))].wireCoedges.push_back(
                    static_cast<int>(i));
            }
        }
    }
    GeometryReader geometry(records);
    AttributeTable attributes(records);
    std::vector<bool> seen(records.Size());
    std::vector<int> bodyRecords;
    std::vector<std::size_t> sizes;
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        bodyRecords.push_back(bodies[i].record);
        sizes.push_back(members[i].faces.size() + members[i].wireCoedges.size());
    }
    const std::vector<std::size_t> twins = FindTwins(records, bodyRecords, sizes, [&](int record) {
        return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(attributes.LookOf(record).Impl()));
    });
    std::vector<ModelData_Appearance> looks(bodies.size());
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        FileBody& body = bodies[i];
        if (body.record != None) {
            attributes.Describe(body.record, body);
            Fields fields = records.Own(At(body.record));
            const int lump = fields.Pointer();
            fields.Skip(1); // a wire
            body.placement = ReadTransform(records, fields.Pointer());
            looks[i] = attributes.LookOf(body.record);
            if (looks[i].IsNull()) {
                looks[i] = attributes.LookOf(lump);
            }
        }
        const std::size_t twin = twins[i];
        if (twin != i && looks[i].Impl() == looks[twin].Impl() &&
            body.properties == bodies[twin].properties) {
            body.twin = twin;
            continue;
        }
        BodyDescriber(records, geometry, attributes, seen, body).Describe(members[i]);
        body.description.appearance = looks[i];
    }
    return bodies;
}

} // namespace cadex::acis
