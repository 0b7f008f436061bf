// The model that a file becomes: the spatial tree as assemblies, elements as parts and instances.
#pragma once

#include <map>
#include <unordered_map>
#include <unordered_set>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Model.hxx>

#include "sdk/ifc/IfcBodies.h"
#include "sdk/ifc/IfcProperties.h"

namespace cadex::ifc {

/// Builds once. Each object of the file stands in the tree once, under the first object that claims it; what
/// nobody claims stands under the project. Openings are cut out of their elements and not shown; spaces are
/// nodes without geometry; representation maps become parts that all their mapped items share.
class ModelBuilder
{
public:
    explicit ModelBuilder(const IfcFile& file);

    /// Appends the projects to the model, or, in a file without one, the topmost objects.
    bool Build(ModelData_Model& model);

private:
    /// An element and where it stands in its parent.
    struct Placed
    {
        ModelData_SceneGraphElement element;
        Affine at;
        bool shared = false; ///< of a representation map
    };
    /// An object whose children are still to be built.
    struct Pending
    {
        Id object;
        ModelData_Assembly assembly;
        Id placement; ///< of the assembly, 0: the world's
        int depth;
    };

    void BuildChildren(const Pending& parent);
    void BuildObject(Id object, const Pending& parent);
    void BuildOrphans(const Pending& root);
    bool IsShown(const Entity& object) const;
    std::vector<Id> ShownChildren(Id object) const;
    std::vector<Placed> ShapeOfObject(const Entity& object, const Base_UTF16String& name);
    std::vector<Id> Representations(const Entity& object) const;
    std::vector<Placed> CutShape(const Entity& object, const std::vector<Id>& representations,
                                 const Base_UTF16String& name, const ModelData_Appearance& fallback);
    /// Those of the object and of the wholes that it is a part of: layers of a wall have its openings.
    std::vector<Body> Openings(const Entity& object);
    bool HasOpenings(Id object) const;
    void AddGridAxes(const Entity& grid, std::vector<Body>& bodies);
    void AddItems(const Entity& representation, const Base_UTF16String& name,
                  const ModelData_Appearance& fallback, std::vector<Placed>& placed,
                  std::vector<Body>& bodies);
    std::size_t ExpandedSize(const ModelData_SceneGraphElement& element) const;
    ModelData_SceneGraphElement MapElement(const Entity& map, const Base_UTF16String& name,
                                           const ModelData_Appearance& fallback);
    void AddInstance(const ModelData_Assembly& parent, const ModelData_SceneGraphElement& element,
                     const Affine& at, const Base_UTF16String& name,
                     const ModelData_PropertyTable* properties);

    const IfcFile& myFile;
    Context myContext;
    Relations myRelations;
    StyleReader myStyles;
    PropertyReader myProperties;
    BodyReader myBodies;

    std::unordered_set<Id> myBuilt;
    std::unordered_map<Id, Id> myWholeOf; ///< what an object stands under
    std::vector<Pending> myPending;
    std::map<std::pair<Id, const void*>, ModelData_SceneGraphElement>
        myMaps;                                              ///< by map and fallback appearance
    std::unordered_set<Id> myOpenMaps;                       ///< being built: a map inside itself
    std::unordered_map<const void*, std::size_t> myExpanded; ///< instances below an element
    std::size_t myUnfolded = 0;                              ///< of all objects so far
};

} // namespace cadex::ifc
