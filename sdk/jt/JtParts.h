// Parts of a JT file: the exact body where the file has one, else the finest level of detail of the shapes.
#pragma once

#include <filesystem>

#include <cadex/ModelData_Part.hxx>

#include "sdk/jt/JtLooks.h"
#include "sdk/jt/JtShapes.h"
#include "sdk/mesh/Placement.h"

namespace cadex::jt {

/// A file that is being read.
struct Document
{
    explicit Document(std::string bytes);

    Container file;
    Budget unpacked; ///< bytes
    Budget values;
    Scene scene;
    double millimetres = 1; ///< in a unit of those nodes that have none of their own
    /// Throws Unreadable when nodes have been visited too often: nodes that others share multiply.
    void CountVisit();

    std::filesystem::path folder; ///< empty where it is not known
    std::string stem;             ///< of the file's name, UTF-8
    int number = 0;               ///< tells documents apart
    std::size_t visits = 0;
};

/// In a unit that a node says it has; nothing when it has none that is known.
std::optional<double> MillimetresOf(const Node& node);

/// What the attributes of a node make of coordinates inside it, in units of the file.
mesh::Affine PlacementOf(const Node& node, const Scene& scene);

/// The data of a node that are loaded when they are asked for; null when it has none of that type.
const LateLoaded* FindLateLoaded(const Node& node, int type);

/// How deep nodes may nest: walkers of the model recurse.
inline constexpr int DeepestNode = 200;

/// Nothing is shown of nodes that are hidden, and of all but one child of some.
std::vector<std::int32_t> ShownChildren(const Node& node);

/// Makes parts of nodes that have shapes alone below them.
class PartMaker
{
public:
    PartMaker(Document& document, Looks& looks) : myDocument(document), myLooks(looks) {}

    /// A part, or an assembly of several bodies; null when there is nothing to show. `millimetres` is the
    /// unit. What is left out is reported; throws Unreadable.
    ModelData_SceneGraphElement Make(const Node& node, const Base_UTF16String& name, double millimetres);

private:
    struct Piece
    {
        Shape::Kind kind = Shape::Kind::Triangles;
        ModelData_Appearance look;
        internal::TriangleArrays arrays;
        std::vector<std::vector<U32>> lines;
    };

    /// Null, with the reason reported, when the file's body makes no sense, or has lost faces where it
    /// `mustBeWhole`.
    ModelData_SceneGraphElement MakeExact(const Node& node, const Base_UTF16String& name, bool mustBeWhole);
    void Collect(const Node& node, const mesh::Affine& placement, const ModelData_Appearance& look,
                 int depth);
    void TakeShape(const Node& node, const mesh::Affine& placement, const ModelData_Appearance& look);
    void Append(Shape&& shape, const ModelData_Appearance& look);
    ModelData_Part PartOfPieces(const Base_UTF16String& name, const ModelData_Appearance& look);

    Document& myDocument;
    Looks& myLooks;
    std::vector<Piece> myPieces;
};

} // namespace cadex::jt
