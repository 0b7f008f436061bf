// From an element to a shape of the geometry kernel.
#pragma once

class TopoDS_Shape;

namespace cadex {

class ModelData_Model;
class ModelData_SceneGraphElement;

class ModelData_ShapeConverter
{
public:
    /// The shape of a part with one B-Rep; else a compound with the placements inside the element applied. A
    /// null shape when there is no B-Rep.
    static TopoDS_Shape Convert(const ModelData_SceneGraphElement& theElement);
    static TopoDS_Shape Convert(const ModelData_Model& theModel);
};

} // namespace cadex
