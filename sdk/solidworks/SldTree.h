// The model that a SolidWorks file becomes: a part, or the assembly with its components in their places.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>

#include "sdk/solidworks/SldAssembly.h"
#include "sdk/solidworks/SldDisplayList.h"

namespace cadex::solidworks {

/// A file in memory.
class SolidWorksFile
{
public:
    /// False, with the reason among the reports, when the file is damaged or none of this format. Call it
    /// inside the engine's guard.
    bool Load(const std::string& bytes, const Base_UTF16String& name);

    /// Appends one root, named as the file. A part is exact where the file's partition has the bodies that
    /// are displayed, else it is what is displayed. In an assembly equal components share one part, hidden
    /// and suppressed ones are left out, and the root's properties say how many. Where the places of
    /// components are not found, their meshes stand as they lie in the display list.
    void Build(ModelData_Model& model);

private:
    ModelData_Part PartOf(const DisplayComponent* component, const Base_UTF16String& name);
    ModelData_SceneGraphElement ElementOf(const std::string& identity, int depth);
    ModelData_Assembly AssemblyOf(const Model& model, const Base_UTF16String& name, int depth);
    ModelData_Assembly AssemblyOfComponents();
    const DisplayComponent* Find(const std::string& model, const std::string& configuration) const;

    Base_UTF16String myName;
    ModelTable myModels;
    std::optional<DisplayList> myList;
    std::string myPartition; ///< of the exact bodies of a part; empty: none
    ModelData_PropertyTable myProperties;
    internal::AppearanceCache myLooks;
    std::map<std::string, ModelData_SceneGraphElement> myElements; ///< by identity of the model
    std::unordered_map<const void*, std::size_t> mySizes;          ///< instances below an element
    std::size_t myHidden = 0;
};

} // namespace cadex::solidworks
