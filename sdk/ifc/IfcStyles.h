// Looks: surface and curve styles, and what materials look like.
#pragma once

#include <unordered_map>

#include <cadex/ModelData_Appearance.hxx>

#include "sdk/ifc/IfcRelations.h"

namespace cadex::ifc {

/// Equal styles share one appearance object. Colours are sRGB as in the file; transparency becomes alpha.
class StyleReader
{
public:
    StyleReader(const IfcFile& file, const Relations& relations) : myFile(file), myRelations(relations) {}

    /// Of a representation item; of a boolean result also what its first operand looks like. Null when none.
    ModelData_Appearance OfItem(Id item);
    /// Of an object by its material or its type's material. Null when none.
    ModelData_Appearance OfObject(Id object);
    /// One colour of an IfcColourRgbList, with an opacity.
    ModelData_Appearance OfColour(double red, double green, double blue, double opacity);

private:
    ModelData_Appearance OfStyles(const Entity& holder, std::size_t argument, int depth);
    ModelData_Appearance OfStyle(const Entity& style, int depth);
    ModelData_Appearance OfSurfaceStyle(const Entity& style);
    ModelData_Appearance OfMaterial(const Entity& material, int depth);
    ModelData_Appearance Shared(const ModelData_Color& colour, const ModelData_Color* specular);

    const IfcFile& myFile;
    const Relations& myRelations;
    std::unordered_map<Id, ModelData_Appearance> myStyles;
    std::unordered_map<Id, ModelData_Appearance> myMaterials;
    std::unordered_map<std::string, ModelData_Appearance> myShared;
};

} // namespace cadex::ifc
