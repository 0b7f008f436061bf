// A model as text, for comparison: one line an element, indented, with what it looks like and what it holds.
//
//     assembly Layer [key=value]
//       instance name (10 0 0)
//         part bolt #cc3366 a0.75 wood.png: 3 triangles
#pragma once

#include <cmath>
#include <cstdio>
#include <string>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_FileTexture.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>
#include <cadex/ModelData_TextureSet.hxx>
#include <cadex/ModelData_TextureVisitor.hxx>

#include "tests/sdk/PropertyText.h"

namespace cadex::test {

class TreeText final : public cadex::ModelData_Model::ElementVisitor
{
public:
    explicit TreeText(const cadex::ModelData_Model& model) { model.Accept(*this); }

    std::string text;

    void operator()(const cadex::ModelData_Part& part) override
    {
        Line("part", part);
        const cadex::ModelData_PolyShapeList& sets = part.PolyRepresentation(cadex::ModelData_RM_Poly).Get();
        for (std::size_t i = 0; i < sets.Size(); ++i) {
            text.back() = i == 0 ? ':' : ',';
            text += LookOf(sets[i].Appearance());
            if (sets[i].IsOfType<cadex::ModelData_IndexedTriangleSet>()) {
                const auto& mesh = static_cast<const cadex::ModelData_IndexedTriangleSet&>(sets[i]);
                text += " " + std::to_string(mesh.NumberOfFaces()) + " triangles";
                text += mesh.HasNormals() ? " n" : "";
                text += mesh.HasUVCoordinates() ? " uv" : "";
            } else {
                text += " " + std::to_string(sets[i].NumberOfVertices()) + " points";
            }
            text += "\n";
        }
        if (!part.BRepRepresentation().IsNull()) {
            text.insert(text.size() - 1, " exact");
        }
    }
    bool VisitEnter(const cadex::ModelData_Assembly& assembly) override
    {
        Line("assembly", assembly);
        ++myDepth;
        return true;
    }
    void VisitLeave(const cadex::ModelData_Assembly&) override { --myDepth; }
    bool VisitEnter(const cadex::ModelData_Instance& instance) override
    {
        Line("instance", instance);
        if (instance.HasTransformation()) {
            const cadex::ModelData_Transformation& at = instance.Transformation();
            char place[100];
            std::snprintf(place, sizeof(place), " (%g %g %g)", at.Data(0, 3), at.Data(1, 3), at.Data(2, 3));
            text.insert(text.size() - 1, place);
        }
        ++myDepth;
        return true;
    }
    void VisitLeave(const cadex::ModelData_Instance&) override { --myDepth; }

private:
    class Textures final : public cadex::ModelData_TextureVisitor
    {
    public:
        std::string files;

        void operator()(const cadex::ModelData_FileTexture& texture) override
        {
            files += " " + texture.FilePath().ToUTF8();
        }
        void operator()(const cadex::ModelData_PixMapTexture&) override { files += " pixels"; }
    };

    static std::string LookOf(const cadex::ModelData_Appearance& look)
    {
        cadex::ModelData_Color colour;
        if (look.IsNull() || !look.ToColor(colour)) {
            return "";
        }
        char digits[40];
        std::snprintf(digits, sizeof(digits), " #%02lx%02lx%02lx", std::lround(colour.R() * 255),
                      std::lround(colour.G() * 255), std::lround(colour.B() * 255));
        std::string result = digits;
        if (colour.A() != 1) {
            std::snprintf(digits, sizeof(digits), " a%g", static_cast<double>(colour.A()));
            result += digits;
        }
        Textures textures;
        look.TextureSet().Accept(textures);
        return result + textures.files;
    }

    void Line(const char* kind, const cadex::ModelData_SceneGraphElement& element)
    {
        text += std::string(myDepth * 2, ' ') + kind + " " + element.Name().ToUTF8();
        text += LookOf(element.Appearance());
        cadex::PropertyText properties;
        element.Properties().Accept(properties);
        if (!properties.text.empty()) {
            properties.text.pop_back();
            for (char& c : properties.text) {
                c = c == '\n' ? ';' : c;
            }
            text += " [" + properties.text + "]";
        }
        text += "\n";
    }

    std::size_t myDepth = 0;
};

} // namespace cadex::test
