// Writes the triangles of a model as a SAT file of version 7.0: each placed part a body of flat faces.
//
// Closed meshes bound solids, of which cavities are shells; open ones are sheets with two sides. Coplanar
// neighbours of one colour are one face. A body has the name of the instance, and its colour; faces of other
// colours have theirs. Lengths are in the caller's unit.
#pragma once

#include <string>

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
    struct Region;
    void WriteRegion(const Region& region);
    void WriteFaces(const Region& region);
    void WriteEdges(const Region& region);
    void WriteTransform(const mesh::Affine& placement);
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
