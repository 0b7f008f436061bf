// The scene graph of a JT file that is written: nodes, attributes, properties, as version 8.1 has them.
//
//     const std::string graph = SceneWriter(plan, parts, options).Write(roots, "box.jt");
#pragma once

#include <functional>
#include <map>
#include <unordered_map>
#include <vector>

#include <cadex/ModelData_PropertyTable.hxx>

#include "sdk/jt/JtOut.h"
#include "sdk/jt/JtShapeWriter.h"
#include "sdk/mesh/ExportPlan.h"

namespace cadex::jt {

/// A set of a part as a shape of the file.
struct WrittenShape
{
    Guid segment;
    ShapeFacts facts;
    ModelData_Appearance look; ///< null: that of the part
    std::size_t set = 0;       ///< in the part's representation
    std::size_t size = 0;      ///< of its element
    std::string element;       ///< empty where it is made again when it is needed
};

/// What a definition holds, with all below it; lengths in units of the file.
struct Extent
{
    std::array<float, 6> box{};
    bool isEmpty = true;
    double area = 0;
    std::size_t vertices = 0;
    std::size_t primitives = 0;

    void Include(const std::array<float, 6>& other);
};

class SceneWriter
{
public:
    /// By definition: shapes of parts, and extents.
    SceneWriter(const mesh::ExportPlan& plan, const std::vector<std::vector<WrittenShape>>& shapes,
                const std::vector<Extent>& extents, Base_LengthUnit unit);

    /// The name of the file that holds a definition; empty for what stands in this file.
    using OtherFile = std::function<Base_UTF16String(std::size_t definition)>;

    /// The elements of the segment, not packed.
    std::string Write(const std::vector<std::size_t>& roots, const Base_UTF16String& fileName,
                      const OtherFile& otherFile);

private:
    using Ids = std::vector<std::int32_t>;

    std::int32_t NewId() { return myNextId++; }
    std::int32_t IdOfDefinition(std::size_t definition);
    void WriteDefinition(std::size_t definition);
    void WritePart(std::size_t definition, std::int32_t id);
    void WriteShapeNode(const WrittenShape& shape, std::int32_t id);
    void WriteInstance(const mesh::ExportPlan::Occurrence& occurrence, std::int32_t id, std::size_t number);
    void WritePartition(std::int32_t id, const Ids& children, const Base_UTF16String& file,
                        const Extent& extent);
    void BeginNode(const Guid& kind, BaseType type, std::int32_t id, const Ids& attributes);
    void BeginGroup(const Guid& kind, std::int32_t id, const Ids& attributes, const Ids& children);
    void PutBox(const std::array<float, 6>& box);
    void PutRanges(std::size_t vertices, std::size_t nodes, std::size_t primitives);

    /// Attributes are written after the node that first has them.
    Ids AttributesOf(const ModelData_Appearance& look);
    std::int32_t TransformOf(const mesh::ExportPlan::Occurrence& occurrence);
    void WriteAttributes();

    void AddProperty(std::int32_t node, const Base_UTF16String& key, const Base_UTF16String& value);
    void AddProperties(std::int32_t node, const ModelData_PropertyTable& table);
    void AddName(std::int32_t node, const Base_UTF16String& name, bool isPart, std::size_t number);
    std::int32_t AtomOf(const Base_UTF16String& text);
    void WriteProperties();

    const mesh::ExportPlan& myPlan;
    const std::vector<std::vector<WrittenShape>>& myShapes;
    const std::vector<Extent>& myExtents;
    Base_UTF16String myUnitName;
    float myUnitsPerMillimetre;
    Out myOut;
    Out myAttributes; ///< that wait for their node to end
    Out myAtoms;
    OtherFile myOtherFile;
    std::int32_t myNextId = 0;
    std::unordered_map<std::size_t, std::int32_t> myDefinitions;
    std::vector<std::size_t> myPending; ///< definitions that are named, but not written
    std::unordered_map<ModelData_Appearance, std::int32_t, ModelData_AppearanceHash> myMaterials;
    std::map<std::string, std::int32_t> myTexts;
    std::map<std::int32_t, std::vector<std::pair<std::int32_t, std::int32_t>>> myProperties; ///< by node
};

} // namespace cadex::jt
