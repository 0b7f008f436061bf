// The model that a JT file becomes: assemblies, parts, instances, and what lies in files beside it.
#pragma once

#include <map>
#include <unordered_map>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Model.hxx>

#include "sdk/jt/JtParts.h"

namespace cadex::jt {

class JtFile
{
public:
    /// Reads everything. `folder` is where parts of a divided file are looked for; empty where it is not
    /// known. False, with the reason among the reports, when the file is damaged, or none of this format.
    /// Call it inside the engine's guard.
    bool Load(std::string bytes, const Base_UTF16String& name, const std::filesystem::path& folder);

    /// Appends one root: the assembly that stands alone at the top of the scene graph, or one that is named
    /// as the file, with what stands there.
    void Build(ModelData_Model& model) const;

private:
    ModelData_Assembly myRoot;
};

/// Makes the elements of one file and of those that it is divided into.
class TreeBuilder
{
public:
    TreeBuilder() = default;

    ModelData_Assembly Build(Document& document, const Base_UTF16String& name);

private:
    struct Built
    {
        ModelData_SceneGraphElement element; ///< null when there is nothing to show
        double millimetres = 1;              ///< in its unit
        std::size_t size = 0;                ///< instances below it
    };
    /// What instances and groups above a node add to it.
    struct Above
    {
        mesh::Affine placement;
        ModelData_Appearance look;
        Base_UTF16String name;   ///< of the instance
        Base_UTF16String ifNone; ///< name of an element that has none
        ModelData_PropertyTable properties;
    };
    struct Target
    {
        ModelData_Assembly assembly;
        double millimetres = 1;
        std::size_t size = 0;
    };

    void AddChildren(Document& document, const Node& node, Target& target, const Above& above);
    void AddChild(Document& document, std::int32_t id, Target& target, const Above& above);
    void AddExternal(Document& document, const Node& node, Target& target, const Above& above);
    void Place(const Built& built, Target& target, const Above& above);
    Built ElementOf(Document& document, std::int32_t id, const Node& node, const Above& above,
                    double millimetres);
    Built OtherFile(const std::filesystem::path& path, const Base_UTF16String& name);
    bool HasStructure(const Document& document, std::int32_t id);
    ModelData_PropertyTable PropertiesOf(Document& document, const Node& node) const;

    Looks myLooks;
    std::map<std::pair<int, std::int32_t>, Built> myElements; ///< by document and node
    std::map<std::pair<int, std::int32_t>, bool> myHaveStructure;
    std::map<std::filesystem::path, Built> myFiles; ///< of the other files
    std::vector<std::filesystem::path> myOpenFiles;
    int myDocuments = 0;
    int myDepth = 0;
};

} // namespace cadex::jt
