// Writes the triangles of a model as a Parasolid transmit file: text, schema 13006, in metres.
//
// Each solid and each open sheet of a placed part is a body of flat faces, where it stands in the model;
// coplanar neighbours of one colour are one face. A single body is the root of the file; several are placed
// in an assembly. Bodies have the name of the instance and its colour; faces of other colours have theirs.
//
// NOTE: written after the published description of the format; read back by our own reader alone.
#pragma once

#include <array>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include <cadex/Base_LengthUnit.hxx>
#include <cadex/ModelData_Model.hxx>

#include "sdk/mesh/FlatPart.h"
#include "sdk/text/AtomicFile.h"

namespace cadex::parasolid {

struct XtBodyPlan;

/// Writes once. The model must be one of which an ExportPlan can be made. The format is in metres whatever
/// the unit.
class ParasolidWriter
{
public:
    ParasolidWriter(text::ByteSink& sink, const ModelData_Model& model, Base_LengthUnit unit);

    bool Write();

private:
    void WriteHeader();
    void WriteAssembly();
    void WritePart(const mesh::PlacedPart& placed);
    bool HasRoom(const mesh::FlatBody& body);
    void WriteInstance(int body, bool isLast);
    void WriteBody(const XtBodyPlan& plan);
    void WriteRegions(const XtBodyPlan& plan);
    void WriteFaces(const XtBodyPlan& plan, std::size_t shell);
    void WriteFins(const XtBodyPlan& plan, std::size_t shell);
    void WriteEdges(const XtBodyPlan& plan, std::size_t shell);
    void WriteVertices(const XtBodyPlan& plan, std::size_t shell);
    void WriteAttributes(const XtBodyPlan& plan);
    void WriteDefinition(std::size_t kind);
    void WriteChains(const XtBodyPlan& plan, const std::vector<int>& heads);
    void WriteColour(int index, const ModelData_Color& colour);
    void WriteName(int index, const std::u16string& name, bool isPlain);

    void Begin(int type, int index, std::size_t length = 0);
    void Lead(int attribute = 0); ///< a node id, and an attribute
    void Put(int value);
    void Put(std::initializer_list<int> values);
    template <typename Number>
    void Real(Number value);
    void Vector(const mesh::Vector3& vector);
    void Letters(std::string_view letters);
    void Flush(bool isEnd);

    text::ByteSink& mySink;
    const ModelData_Model& myModel;
    std::string myBuffer;
    bool myIsWhole = true;
    int myNext = 1;                     ///< index of a node
    int myNodeId = 0;                   ///< the last one
    int myInstance = 0;                 ///< that waits for the next one; 0: none
    int myInstanceBody = 0;             ///< which it places
    int myBefore = 0;                   ///< the instance before it
    int myInstances = 0;                ///< written
    std::array<int, 4> myDefinitions{}; ///< of attributes, by kind; 0: not yet written
};

} // namespace cadex::parasolid
