// Writes the triangles of a model as a SAT file of version 7.0: each placed part a body of flat faces.
//
// Closed meshes bound solids, of which cavities are shells; open ones are sheets with two sides. Coplanar
// neighbours of one colour are one face. A body has the name of the instance, and its colour; faces of other
// colours have theirs. Polylines become wires, in a body of their own. Lengths are in the caller's unit.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <cadex/Base_LengthUnit.hxx>
#include <cadex/ModelData_Model.hxx>

#include "sdk/mesh/FlatPart.h"
#include "sdk/mesh/PlacedParts.h"
#include "sdk/text/AtomicFile.h"

namespace cadex::acis {

using mesh::Vector3;

/// Writes once. The model must be one of which an ExportPlan can be made.
class AcisWriter
{
public:
    AcisWriter(text::ByteSink& sink, const ModelData_Model& model, Base_LengthUnit unit);

    bool Write();

private:
    void WriteHeader(std::size_t bodies);
    void WritePart(const mesh::PlacedPart& placed);
    void WriteFacets(const mesh::PlacedPart& placed, const mesh::Affine& toFile, bool isMoved);
    void WriteWires(const mesh::PlacedPart& placed, const mesh::Affine& toFile, bool isMoved);
    struct Wire;
    static std::vector<Wire> WiresOf(const mesh::PlacedPart& placed, const mesh::Affine& toFile);
    void WriteWire(const Wire& wire, std::size_t shell, bool isLast,
                   const std::optional<ModelData_Color>& bodyColour);
    struct BodyHead;
    void WriteHead(const BodyHead& head, std::size_t lump);
    struct Region;
    void WriteRegion(const Region& region);
    void WriteFaces(const Region& region);
    void WriteEdges(const Region& region);
    void WriteTransform(const mesh::Affine& placement);
    void WriteEdge(std::size_t attribute, std::size_t start, std::size_t end, std::size_t coedge,
                   const Vector3& from, const Vector3& direction, double length);
    void WriteVertex(std::size_t edge, const Vector3& place);
    void WriteColour(std::size_t owner, std::size_t next, const ModelData_Color& colour);
    void WriteName(std::size_t owner, std::size_t before, const Base_UTF16String& name);

    void Begin(const char* type, std::size_t attribute);
    void Pointer(std::size_t record);
    template <typename Real>
    void Number(Real value);
    void Vector(const Vector3& vector);
    void Word(std::string_view word);
    void Text(std::string_view text);
    void End();

    text::ByteSink& mySink;
    const ModelData_Model& myModel;
    const double myMillimetres;
    std::string myBuffer;
    std::size_t myNext = 0; ///< record
    bool myIsWhole = true;
};

} // namespace cadex::acis
