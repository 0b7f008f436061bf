#include "sdk/ifc/IfcStyles.h"

#include <algorithm>
#include <cstring>

namespace cadex::ifc {
namespace {

constexpr int MaxDepth = 16; ///< of operands, material sets and style assignments within each other

float Channel(double value)
{
    return static_cast<float>(std::clamp(value, 0.0, 1.0));
}

bool ReadColour(const Entity& colour, double opacity, ModelData_Color& result)
{
    struct Named
    {
        std::string_view name;
        float red, green, blue;
    };
    static constexpr Named Names[] = {{"black", 0, 0, 0}, {"red", 1, 0, 0},    {"green", 0, 1, 0},
                                      {"blue", 0, 0, 1},  {"yellow", 1, 1, 0}, {"magenta", 1, 0, 1},
                                      {"cyan", 0, 1, 1},  {"white", 1, 1, 1}};
    if (colour.Is(Type::IfcColourRgb)) {
        result = ModelData_Color(Channel(colour.Real(1)), Channel(colour.Real(2)), Channel(colour.Real(3)),
                                 Channel(opacity));
        return true;
    }
    const std::string name =
        colour.Is(Type::IfcDraughtingPreDefinedColour) ? colour.Text(0).ToUTF8() : std::string();
    for (const Named& known : Names) {
        if (name == known.name) {
            result = ModelData_Color(known.red, known.green, known.blue, Channel(opacity));
            return true;
        }
    }
    return false;
}

} // namespace

ModelData_Appearance StyleReader::Shared(const ModelData_Color& colour, const ModelData_Color* specular)
{
    float key[8] = {colour.R(), colour.G(), colour.B(), colour.A(), -1, -1, -1, -1};
    if (specular != nullptr) {
        key[4] = specular->R();
        key[5] = specular->G();
        key[6] = specular->B();
    }
    std::string bytes(sizeof key, '\0');
    std::memcpy(bytes.data(), key, sizeof key);
    ModelData_Appearance& appearance = myShared[bytes];
    if (appearance.IsNull()) {
        ModelData_Material material(colour);
        if (specular != nullptr) {
            material.SpecularColor() = *specular;
        }
        appearance = specular != nullptr ? ModelData_Appearance(material) : ModelData_Appearance(colour);
    }
    return appearance;
}

ModelData_Appearance StyleReader::OfColour(double red, double green, double blue, double opacity)
{
    return Shared(ModelData_Color(Channel(red), Channel(green), Channel(blue), Channel(opacity)), nullptr);
}

ModelData_Appearance StyleReader::OfItem(Id item)
{
    for (int depth = 0; depth < MaxDepth && item != 0; ++depth) {
        if (const Id styled = Relations::Find(myRelations.styleOf, item)) {
            ModelData_Appearance appearance = OfStyles(myFile.Get(styled), 1, 0);
            if (!appearance.IsNull()) {
                return appearance;
            }
        }
        const Type type = myFile.TypeOf(item);
        const bool boolean = type == Type::IfcBooleanResult || type == Type::IfcBooleanClippingResult;
        const bool tree = type == Type::IfcCsgSolid;
        item = boolean || tree ? myFile.Get(item).RefId(boolean ? 1 : 0) : 0;
    }
    return {};
}

ModelData_Appearance StyleReader::OfStyles(const Entity& holder, std::size_t argument, int depth)
{
    for (Id id : holder.Refs(argument)) {
        ModelData_Appearance appearance = OfStyle(myFile.Get(id), depth + 1);
        if (!appearance.IsNull()) {
            return appearance;
        }
    }
    return {};
}

ModelData_Appearance StyleReader::OfStyle(const Entity& style, int depth)
{
    const auto known = myStyles.find(style.Id());
    if (known != myStyles.end() || depth > MaxDepth) {
        return known != myStyles.end() ? known->second : ModelData_Appearance();
    }
    ModelData_Appearance appearance;
    ModelData_Color colour;
    switch (style.Type()) {
    case Type::IfcPresentationStyleAssignment:
        appearance = OfStyles(style, 0, depth);
        break;
    case Type::IfcSurfaceStyle:
        appearance = OfSurfaceStyle(style);
        break;
    case Type::IfcCurveStyle: // Name, CurveFont, CurveWidth, CurveColour
        appearance = ReadColour(style.Ref(3), 1, colour) ? Shared(colour, nullptr) : appearance;
        break;
    case Type::IfcFillAreaStyle: // Name, FillStyles: a colour among hatchings
        for (Id id : style.Refs(1)) {
            if (appearance.IsNull() && ReadColour(myFile.Get(id), 1, colour)) {
                appearance = Shared(colour, nullptr);
            }
        }
        break;
    default:
        break;
    }
    myStyles[style.Id()] = appearance;
    return appearance;
}

ModelData_Appearance StyleReader::OfSurfaceStyle(const Entity& style)
{
    for (Id id : style.Refs(2)) {
        const Entity shading = myFile.Get(id);
        const bool rendering = shading.Is(Type::IfcSurfaceStyleRendering);
        ModelData_Color colour;
        // SurfaceColour, Transparency (since IFC4 also of the plain shading), DiffuseColour,
        // TransmissionColour, DiffuseTransmissionColour, ReflectionColour, SpecularColour ...
        if ((!rendering && !shading.Is(Type::IfcSurfaceStyleShading)) ||
            !ReadColour(shading.Ref(0), 1 - shading.Real(1, 0), colour)) {
            continue;
        }
        if (rendering) {
            ReadColour(shading.Ref(2), colour.A(), colour); // a factor leaves the surface's colour
        }
        ModelData_Color specular;
        const bool shines = rendering && ReadColour(shading.Ref(6), 1, specular);
        return Shared(colour, shines ? &specular : nullptr);
    }
    return {};
}

ModelData_Appearance StyleReader::OfObject(Id object)
{
    Id material = Relations::Find(myRelations.materialOf, object);
    ModelData_Appearance appearance =
        material != 0 ? OfMaterial(myFile.Get(material), 0) : ModelData_Appearance();
    if (appearance.IsNull()) {
        material = Relations::Find(myRelations.materialOf, Relations::Find(myRelations.typeOf, object));
        appearance = material != 0 ? OfMaterial(myFile.Get(material), 0) : appearance;
    }
    return appearance;
}

ModelData_Appearance StyleReader::OfMaterial(const Entity& material, int depth)
{
    const auto known = myMaterials.find(material.Id());
    if (!material || known != myMaterials.end() || depth > MaxDepth) {
        return known != myMaterials.end() ? known->second : ModelData_Appearance();
    }
    ModelData_Appearance appearance;
    for (Id representation : myRelations.List(myRelations.materialStyles, material.Id())) {
        for (Id styled : myFile.Get(representation).Refs(3)) {
            if (appearance.IsNull()) {
                appearance = OfStyles(myFile.Get(styled), 1, 0);
            }
        }
    }
    // a set of layers, profiles or constituents looks like the first of them that has a look
    for (std::size_t argument = 0; argument < material.Size() && !material.Is(Type::IfcMaterial);
         ++argument) {
        for (Id part : material.Refs(argument)) {
            if (appearance.IsNull()) {
                appearance = OfMaterial(myFile.Get(part), depth + 1);
            }
        }
    }
    myMaterials[material.Id()] = appearance;
    return appearance;
}

} // namespace cadex::ifc
