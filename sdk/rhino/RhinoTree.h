// The model that a 3DM file becomes: layers as assemblies, blocks as shared parts and assemblies, and how
// each part looks.
#pragma once

#include <map>
#include <unordered_map>
#include <vector>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include "sdk/rhino/RhinoFile.h"

namespace cadex::rhino {

/// Appearances of objects: one for each material and each colour.
///
/// A surface shows the material that its object (or layer, or the block's reference) has, else the display
/// colour. Black as the colour of a layer is what every new document begins with and is meant for curves:
/// surfaces on such a layer get the default grey. Curves and points show the display colour alone.
class Looks
{
public:
    explicit Looks(const RhinoFile& file);

    /// `parent` is the look of the reference that shows the object; null outside of blocks.
    ModelData_Appearance Of(const Object& object, const ModelData_Appearance& parent);
    /// Whether the look may depend on the parent's.
    static bool IsByParent(const Attributes& attributes);

    const Layer* LayerOf(const Attributes& attributes) const;

private:
    ModelData_Appearance OfMaterial(int index);
    ModelData_Appearance OfColour(PackedColour colour);
    ModelData_Appearance DisplayColour(const Object& object, const ModelData_Appearance& parent,
                                       bool isSurface);

    const RhinoFile& myFile;
    std::unordered_map<int, const Layer*> myLayers;
    std::unordered_map<int, const Material*> myMaterials;
    std::unordered_map<int, ModelData_Appearance> myMaterialLooks;
    internal::AppearanceCache myColours;
};

/// Builds once.
class ModelBuilder
{
public:
    /// `name` is what the root is called in a file whose objects lie on several top-level layers.
    ModelBuilder(RhinoFile& file, const Base_UTF16String& name);

    /// Appends one root: the assembly of the only top-level layer in use, or one for the document with those
    /// of all such layers in it. Layers become assemblies, one for each that holds a shown object itself or
    /// in a layer below it. Hidden objects, and those on hidden layers, are left out, and the root's
    /// properties say how many.
    void Build(ModelData_Model& model);

private:
    bool IsShown(const Object& object) const;
    const Layer* ParentOf(const Layer& layer) const;
    void PlaceLayers();
    ModelData_Assembly AssemblyOf(const Layer& layer);
    void AddObject(ModelData_Assembly& parent, Object& object, const ModelData_Appearance& parentLook);
    ModelData_SceneGraphElement ElementOf(const Uuid& definition, const ModelData_Appearance& parentLook);
    ModelData_SceneGraphElement BuildDefinition(const Definition& definition,
                                                const ModelData_Appearance& parentLook);
    ModelData_Part PartOf(Object& object, const Base_UTF16String& name, const ModelData_Appearance& look);
    ModelData_Part PartOfSets(const std::vector<Object*>& members, const Base_UTF16String& name,
                              const ModelData_Appearance& parentLook);
    void AddBody(Body& body, const ModelData_Appearance& look, ModelData_Part& part,
                 ModelData_PolyRepresentation& meshes) const;
    bool DependsOnParent(const Uuid& definition);
    void AddProperties(ModelData_Assembly& root) const;
    std::size_t SizeOf(const ModelData_SceneGraphElement& element) const;

    RhinoFile& myFile;
    Base_UTF16String myName;
    Looks myLooks;
    std::map<Uuid, const Layer*> myLayersById;
    std::map<Uuid, const Definition*> myDefinitions;
    std::map<Uuid, Object*> myObjects; ///< members of definitions alone
    std::unordered_map<const Layer*, ModelData_Assembly> myAssemblies;
    std::vector<ModelData_Assembly> myTops;
    std::map<std::pair<Uuid, const void*>, ModelData_SceneGraphElement>
        myElements; ///< by definition and look
    std::map<Uuid, bool> myDependsOnParent;
    std::vector<Uuid> myOpen;                             ///< definitions that are being built
    std::unordered_map<const void*, std::size_t> mySizes; ///< instances below an element
    std::size_t myHidden = 0;
};

} // namespace cadex::rhino
