// Common base of parts, assemblies and instances: a name, an appearance and properties.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_BaseObject.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_PropertyTable.hxx>

namespace cadex {

/// Setting anything on a null element does nothing.
class CADEX_EXPORT ModelData_SceneGraphElement : public ModelData_BaseObject
{
public:
    ModelData_SceneGraphElement() = default;

    void SetAppearance(const ModelData_Appearance& theAppearance);
    /// Null handle when none.
    ModelData_Appearance Appearance() const;

    /// Without a table yet, links the given one (shared); else appends its entries to the element's own.
    void AddProperties(const ModelData_PropertyTable& theTable);
    /// Null handle when none.
    ModelData_PropertyTable Properties() const;

    /// Visits this element with its whole subtree; see ModelData_Model::Accept.
    void Accept(ModelData_Model::ElementVisitor& theVisitor) const;
};

} // namespace cadex
