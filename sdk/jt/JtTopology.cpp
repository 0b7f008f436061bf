#include "sdk/jt/JtTopology.h"

#include <algorithm>
#include <array>
#include <limits>

#include "sdk/jt/JtVertices.h"

namespace cadex::jt {

namespace {

using Codes = std::vector<std::int32_t>;

constexpr std::size_t ContextCount = 8;
/// Faces of more vertices have their masks in words of their own.
constexpr std::size_t LargestPackedDegree = 64;
/// The next face is one of the last so many that are begun.
constexpr std::size_t SearchWidth = 16;
constexpr int None = -1;

[[noreturn]] void Damaged()
{
    throw Unreadable("the connectivity of a shape is damaged");
}

/// A list that is taken symbol by symbol.
class Symbols
{
public:
    void Read(Bytes& in, Predictor predictor, Budget& budget) { myCodes = ReadPacket(in, predictor, budget); }
    void Set(Codes codes) { myCodes = std::move(codes); }

    std::int32_t Next()
    {
        if (myNext == myCodes.size()) {
            Damaged();
        }
        return myCodes[myNext++];
    }
    bool IsAtEnd() const { return myNext == myCodes.size(); }
    std::size_t Size() const { return myCodes.size(); }
    const Codes& All() const { return myCodes; }

private:
    Codes myCodes;
    std::size_t myNext = 0;
};

struct CodedLists
{
    std::array<Symbols, ContextCount> degrees;
    Symbols valences;
    Symbols groups;
    Symbols flags;
    std::array<Symbols, ContextCount> masks; ///< the lowest 30 bits (in the last list)
    Symbols middleMasks;                     ///< the next 30 of the last list
    Symbols highMasks;                       ///< and the last 4
    Symbols largeMasks;                      ///< words, of faces of many vertices
    Symbols splitFaces;
    Symbols splitPlaces;

    void Read(Bytes& in, Budget& budget)
    {
        for (Symbols& list : degrees) {
            list.Read(in, Predictor::None, budget);
        }
        valences.Read(in, Predictor::None, budget);
        groups.Read(in, Predictor::None, budget);
        flags.Read(in, Predictor::Lag1, budget);
        for (Symbols& list : masks) {
            list.Read(in, Predictor::None, budget);
        }
        middleMasks.Read(in, Predictor::None, budget);
        highMasks.Read(in, Predictor::None, budget);
        const std::size_t words = in.Count(4);
        Codes large(words);
        for (std::int32_t& word : large) {
            word = in.I32();
        }
        largeMasks.Set(std::move(large));
        splitFaces.Read(in, Predictor::Lag1, budget);
        splitPlaces.Read(in, Predictor::None, budget);
        in.U32(); // checksum
    }

    bool AreAtEnd() const
    {
        const auto isAtEnd = [](const Symbols& list) { return list.IsAtEnd(); };
        return std::all_of(degrees.begin(), degrees.end(), isAtEnd) && valences.IsAtEnd() &&
               std::all_of(masks.begin(), masks.end(), isAtEnd) && splitFaces.IsAtEnd() &&
               splitPlaces.IsAtEnd();
    }
};

/// Where a vertex and a face of the dual meet: which is the other one, and its place there.
struct Meeting
{
    int other = None;
    int place = None;
};

struct DualVertex
{
    std::size_t first = 0; ///< of its meetings
    int valence = 0;
    std::int32_t flags = 0;
};

struct DualFace
{
    std::size_t first = 0;
    int degree = 0;
    int empty = 0;      ///< places without a vertex
    int firstEmpty = 0; ///< no place before it is empty
    bool isDone = false;
    std::size_t firstAttribute = 0;
    std::size_t mask = 0; ///< first of its marks
};

class Decoder
{
public:
    Decoder(CodedLists& lists, Budget& budget) : myLists(lists), myBudget(budget) {}

    void Run();
    CodedMesh Mesh() const;

private:
    void BeginComponent();
    void CompleteFace(int face);
    void CompleteVertex(int vertex);
    void ActivateFace(int vertex, int place);
    int NewVertex();
    int NewFace(int vertex);
    void ReadMask(DualFace& face);
    std::size_t ContextOf(int vertex) const;
    int NextActiveFace();
    void Link(int vertex, int place, int face, int placeOnFace);

    DualVertex& VertexAt(int index) { return myVertices[static_cast<std::size_t>(index)]; }
    const DualVertex& VertexAt(int index) const { return myVertices[static_cast<std::size_t>(index)]; }
    DualFace& FaceAt(int index) { return myFaces[static_cast<std::size_t>(index)]; }
    const DualFace& FaceAt(int index) const { return myFaces[static_cast<std::size_t>(index)]; }
    Meeting& AtVertex(int vertex, int place)
    {
        return myAtVertices[VertexAt(vertex).first + static_cast<std::size_t>(place)];
    }
    const Meeting& AtVertex(int vertex, int place) const
    {
        return myAtVertices[VertexAt(vertex).first + static_cast<std::size_t>(place)];
    }
    Meeting& AtFace(int face, int place)
    {
        return myAtFaces[FaceAt(face).first + static_cast<std::size_t>(place)];
    }

    CodedLists& myLists;
    Budget& myBudget;
    std::vector<DualVertex> myVertices;
    std::vector<DualFace> myFaces;
    std::vector<Meeting> myAtVertices; ///< faces around each vertex, counter-clockwise
    std::vector<Meeting> myAtFaces;    ///< vertices around each face, counter-clockwise
    std::vector<bool> myMarks;         ///< for each place of a face whether an attribute begins there
    std::vector<int> myActive;         ///< faces that were begun
    std::size_t myAttributeCount = 0;
};

void Decoder::Run()
{
    while (!myLists.valences.IsAtEnd()) {
        BeginComponent();
        for (int face = NextActiveFace(); face != None; face = NextActiveFace()) {
            CompleteFace(face);
            FaceAt(face).isDone = true;
        }
    }
    if (!myLists.AreAtEnd()) {
        Damaged();
    }
}

void Decoder::BeginComponent()
{
    const int vertex = NewVertex();
    for (int place = 0; place < VertexAt(vertex).valence; ++place) {
        ActivateFace(vertex, place);
    }
}

int Decoder::NewVertex()
{
    const std::int32_t valence = myLists.valences.Next();
    if (valence < 2) {
        Damaged();
    }
    myBudget.Take(static_cast<std::size_t>(valence));
    DualVertex vertex;
    vertex.first = myAtVertices.size();
    vertex.valence = valence;
    myLists.groups.Next();
    vertex.flags = myLists.flags.Next();
    myAtVertices.resize(vertex.first + static_cast<std::size_t>(valence));
    myVertices.push_back(vertex);
    return static_cast<int>(myVertices.size()) - 1;
}

/// NOTE: the context comes of the valence and of the degrees of the faces that are known around the vertex.
std::size_t Decoder::ContextOf(int vertex) const
{
    const int valence = VertexAt(vertex).valence;
    if (valence > 4) {
        return valence == 5 ? 6 : 7;
    }
    const int usual = valence == 3 ? 6 : 4; // degree of a face in a regular mesh
    std::int64_t sum = 0;
    std::int64_t known = 0;
    for (int place = 0; place < valence; ++place) {
        const int face = AtVertex(vertex, place).other;
        if (face != None) {
            sum += FaceAt(face).degree;
            ++known;
        }
    }
    const std::size_t first = valence == 4 ? 3 : 0;
    if (valence == 2) {
        return 7;
    }
    return first + (sum < known * usual ? 0 : sum == known * usual ? 1 : 2);
}

/// None where the next symbol says that the face is one of those begun.
int Decoder::NewFace(int vertex)
{
    const std::int32_t degree = myLists.degrees[ContextOf(vertex)].Next();
    if (degree == 0) {
        return None;
    }
    if (degree < 0) {
        Damaged();
    }
    myBudget.Take(static_cast<std::size_t>(degree));
    DualFace face;
    face.first = myAtFaces.size();
    face.degree = degree;
    face.empty = degree;
    face.firstAttribute = myAttributeCount;
    myAtFaces.resize(face.first + static_cast<std::size_t>(degree));
    ReadMask(face);
    myFaces.push_back(face);
    return static_cast<int>(myFaces.size()) - 1;
}

void Decoder::ReadMask(DualFace& face)
{
    const auto degree = static_cast<std::size_t>(face.degree);
    face.mask = myMarks.size();
    const auto mark = [&](bool isMarked) {
        myMarks.push_back(isMarked);
        myAttributeCount += isMarked ? 1 : 0;
    };
    if (degree > LargestPackedDegree) {
        std::uint32_t word = 0;
        for (std::size_t i = 0; i < degree; ++i) {
            word = i % 32 == 0 ? static_cast<std::uint32_t>(myLists.largeMasks.Next()) : word >> 1;
            mark((word & 1) != 0);
        }
        return;
    }
    const std::size_t context = std::min(ContextCount - 1, degree < 2 ? 0 : degree - 2);
    std::uint64_t bits = static_cast<std::uint32_t>(myLists.masks[context].Next());
    if (context == ContextCount - 1) {
        // shorter lists stand for zeros at their ends
        const auto next = [](Symbols& list) {
            return list.Size() == 0 ? std::uint64_t{0} : static_cast<std::uint32_t>(list.Next());
        };
        bits |= next(myLists.middleMasks) << 30;
        bits |= next(myLists.highMasks) << 60;
    }
    for (std::size_t i = 0; i < degree; ++i) {
        mark((bits >> i & 1) != 0);
    }
}

void Decoder::Link(int vertex, int place, int face, int placeOnFace)
{
    DualFace& target = FaceAt(face);
    if (place < 0 || place >= VertexAt(vertex).valence || placeOnFace < 0 || placeOnFace >= target.degree ||
        AtVertex(vertex, place).other != None || AtFace(face, placeOnFace).other != None) {
        Damaged();
    }
    AtVertex(vertex, place) = {face, placeOnFace};
    AtFace(face, placeOnFace) = {vertex, place};
    --target.empty;
}

void Decoder::ActivateFace(int vertex, int place)
{
    const int face = NewFace(vertex);
    if (face != None) {
        Link(vertex, place, face, 0);
        myActive.push_back(face);
        return;
    }
    const std::int32_t offset = myLists.splitFaces.Next();
    const std::int32_t placeOnFace = myLists.splitPlaces.Next();
    if (offset <= 0 || static_cast<std::size_t>(offset) > myActive.size()) {
        Damaged();
    }
    Link(vertex, place, myActive[myActive.size() - static_cast<std::size_t>(offset)], placeOnFace);
}

/// The face with the fewest empty places among the last ones that are begun.
int Decoder::NextActiveFace()
{
    while (!myActive.empty() && FaceAt(myActive.back()).isDone) {
        myActive.pop_back();
    }
    int best = None;
    int fewest = std::numeric_limits<int>::max();
    for (std::size_t i = myActive.size(); i-- > 0 && i + SearchWidth >= myActive.size();) {
        const DualFace& face = FaceAt(myActive[i]);
        if (face.isDone) {
            myActive.erase(myActive.begin() + static_cast<std::ptrdiff_t>(i));
        } else if (face.empty < fewest) {
            fewest = face.empty;
            best = myActive[i];
        }
    }
    return best;
}

void Decoder::CompleteFace(int face)
{
    while (FaceAt(face).empty > 0) {
        int& place = FaceAt(face).firstEmpty;
        while (AtFace(face, place).other != None) {
            ++place;
        }
        const int placeOnFace = place;
        const int vertex = NewVertex();
        Link(vertex, 0, face, placeOnFace);
        CompleteVertex(vertex);
    }
}

/// Links the faces around a vertex that are reached over its finished neighbours, both ways round from its
/// first face; the others are new, or named.
void Decoder::CompleteVertex(int vertex)
{
    const int valence = VertexAt(vertex).valence;
    int first = 1; // of the places that are still open
    for (; first < valence; ++first) {
        const Meeting at = AtVertex(vertex, first - 1);
        const int degree = FaceAt(at.other).degree;
        const Meeting neighbour = AtFace(at.other, (at.place + degree - 1) % degree);
        if (neighbour.other == None || neighbour.other == vertex) {
            break;
        }
        const int around = VertexAt(neighbour.other).valence;
        const Meeting next = AtVertex(neighbour.other, (neighbour.place + around - 1) % around);
        if (next.other == None) {
            break;
        }
        const int nextDegree = FaceAt(next.other).degree;
        Link(vertex, first, next.other, (next.place + nextDegree - 1) % nextDegree);
    }
    int last = valence - 1;
    for (int before = 0; last >= first; --last) {
        const Meeting at = AtVertex(vertex, before);
        const int degree = FaceAt(at.other).degree;
        const Meeting neighbour = AtFace(at.other, (at.place + 1) % degree);
        if (neighbour.other == None || neighbour.other == vertex) {
            break;
        }
        const int around = VertexAt(neighbour.other).valence;
        const Meeting next = AtVertex(neighbour.other, (neighbour.place + 1) % around);
        if (next.other == None) {
            break;
        }
        const int nextDegree = FaceAt(next.other).degree;
        Link(vertex, last, next.other, (next.place + 1) % nextDegree);
        before = last;
    }
    for (int place = first; place <= last; ++place) {
        ActivateFace(vertex, place);
    }
}

CodedMesh Decoder::Mesh() const
{
    CodedMesh mesh;
    mesh.pointCount = myFaces.size();
    mesh.attributeCount = myAttributeCount;
    // for each place of a face the number of its attribute: the last that began at or before it, around
    std::vector<U32> attributes(myMarks.size(), 0);
    for (const DualFace& face : myFaces) {
        const auto degree = static_cast<std::size_t>(face.degree);
        const auto marks = static_cast<std::size_t>(
            std::count(myMarks.begin() + static_cast<std::ptrdiff_t>(face.mask),
                       myMarks.begin() + static_cast<std::ptrdiff_t>(face.mask + degree), true));
        std::size_t attribute = face.firstAttribute + std::max<std::size_t>(marks, 1) - 1;
        std::size_t next = face.firstAttribute;
        for (std::size_t i = 0; i < degree; ++i) {
            attribute = myMarks[face.mask + i] ? next++ : attribute;
            attributes[face.mask + i] = static_cast<U32>(attribute);
        }
    }
    for (const DualVertex& vertex : myVertices) {
        if (vertex.flags != 0) {
            continue;
        }
        for (std::size_t i = 0; i < static_cast<std::size_t>(vertex.valence); ++i) {
            const Meeting& at = myAtVertices[vertex.first + i];
            mesh.points.push_back(static_cast<U32>(at.other));
            mesh.attributes.push_back(attributes[FaceAt(at.other).mask + static_cast<std::size_t>(at.place)]);
        }
        mesh.starts.push_back(mesh.points.size());
    }
    return mesh;
}

} // namespace

CodedMesh ReadTopology(Bytes& in, Budget& budget)
{
    CodedLists lists;
    lists.Read(in, budget);
    Decoder decoder(lists, budget);
    decoder.Run();
    return decoder.Mesh();
}

} // namespace cadex::jt
