// From an element to a shape of the geometry kernel.
#pragma once

#include <cadex/Base_Export.hxx>

class TopoDS_Shape;

namespace cadex {

class ModelData_Model;
class ModelData_SceneGraphElement;

class CADEX_EXPORT ModelData_ShapeConverter
{
public:
    /// The shape of a part with one B-Rep; else a compound with the placements inside the element applied. A
    /// null shape when there is no B-Rep. Bodies of more than 1,000 facets are not converted: the engine
    /// keeps them as triangles, and building a kernel shape of them would take longer than reading the file
    /// did.
    static TopoDS_Shape Convert(const ModelData_SceneGraphElement& theElement);
    static TopoDS_Shape Convert(const ModelData_Model& theModel);
};

} // namespace cadex
