// Reading a file as the import does, and what came of it, as text.
#pragma once

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include <cadex/IGES_Reader.hxx>
#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/ModelAlgo_ValidationProperty.hxx>
#include <cadex/ModelAlgo_ValidationPropertyData.hxx>
#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/STEP_Reader.hxx>

#include "sdk/model/Elements.h"
#include "sdk/model/TriangleSets.h"

namespace cadex::test {

inline std::string BytesOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void WriteBytes(const std::filesystem::path& file, const std::string& bytes)
{
    std::ofstream(file, std::ios::binary) << bytes;
}

/// Reads and transfers by the extension; meshes with the importer's default tolerances.
inline bool Import(const std::filesystem::path& file, ModelData_Model& model)
{
    const auto read = [&](Base_Reader&& reader) {
        return reader.ReadFile(file.string().c_str()) && reader.Transfer(model);
    };
    STEP_Reader step;
    step.Parameters().PreferredBRepRepresentationType() = STEP_ReaderParameters::All;
    const bool done = file.extension() == ".igs" ? read(IGES_Reader()) : read(std::move(step));
    if (done) {
        ModelAlgo_BRepMesherParameters parameters;
        parameters.SetAngularDeflection(0.42);
        parameters.SetChordalDeflection(0.0076);
        ModelAlgo_BRepMesher(parameters).Compute(model, true);
    }
    return done;
}

/// One line an element, indented: kind, name, placement, colour, properties; below a part its sets, and its
/// volume in cubic millimetres rounded to three digits.
class Outline : public ModelData_Model::VoidElementVisitor, public ModelData_PropertyTable::Visitor
{
public:
    static std::string Of(const ModelData_Model& model)
    {
        Outline outline;
        model.Accept(outline);
        return outline.myText.str();
    }

    void operator()(const ModelData_Part& part) override
    {
        Line("part", part);
        ModelAlgo_ValidationPropertyData data;
        if (ModelAlgo_ValidationProperty::ComputeValidationProperties(part, data)) {
            myText << " volume " << Rounded(data.Volume());
        }
        myText << '\n';
        const ModelData_PolyRepresentation mesh = part.PolyRepresentation(ModelData_RM_Poly);
        for (std::size_t i = 0; !mesh.IsNull() && i < mesh.Get().Size(); ++i) {
            const ModelData_PolyVertexSet& set = mesh.Get()[i];
            myText << std::string(2 * myDepth + 2, ' ');
            if (set.IsOfType<ModelData_IndexedTriangleSet>()) {
                const auto& triangles = static_cast<const ModelData_IndexedTriangleSet&>(set);
                myText << triangles.NumberOfFaces() << " triangles";
                totalTriangles += triangles.NumberOfFaces();
            } else {
                myText << set.NumberOfVertices() << " points";
            }
            if (set.Name() != part.Name()) {
                myText << " '" << set.Name().ToUTF8() << "'";
            }
            myText << Colour(set.Appearance()) << '\n';
        }
    }
    bool VisitEnter(const ModelData_Assembly& assembly) override { return Open("assembly", assembly); }
    void VisitLeave(const ModelData_Assembly&) override { --myDepth; }
    bool VisitEnter(const ModelData_Instance& instance) override
    {
        Line("instance", instance);
        if (instance.HasTransformation()) {
            const ModelData_Transformation& t = instance.Transformation();
            myText << " at " << Rounded(t.Data(0, 3)) << ' ' << Rounded(t.Data(1, 3)) << ' '
                   << Rounded(t.Data(2, 3));
            if (t.Data(0, 0) != 1.0) {
                myText << " x axis " << Rounded(t.Data(0, 0)) << ' ' << Rounded(t.Data(1, 0)) << ' '
                       << Rounded(t.Data(2, 0));
            }
        }
        myText << '\n';
        ++myDepth;
        return true;
    }
    void VisitLeave(const ModelData_Instance&) override { --myDepth; }

    void operator()(const Base_UTF16String& n, I32 v) override { Property(n, "i32 " + std::to_string(v)); }
    void operator()(const Base_UTF16String& n, I64 v) override { Property(n, "i64 " + std::to_string(v)); }
    void operator()(const Base_UTF16String& n, float v) override
    {
        Property(n, Number(static_cast<double>(v)));
    }
    void operator()(const Base_UTF16String& n, double v) override { Property(n, Number(v)); }
    void operator()(const Base_UTF16String& n, ModelData_PropertyTable::TimeType v) override
    {
        Property(n, "time " + std::to_string(v.myValue));
    }
    void operator()(const Base_UTF16String& n, const Base_UTF16String& v) override
    {
        Property(n, v.ToUTF8());
    }
    void operator()(const Base_UTF16String& n, const ModelData_Point& v) override
    {
        Property(n, "point " + Number(v.X()) + " / " + Number(v.Y()) + " / " + Number(v.Z()));
    }
    void operator()(const Base_UTF16String& n, const ModelData_Box&) override { Property(n, "box"); }

    static std::string Colour(const ModelData_Appearance& appearance)
    {
        ModelData_Color colour;
        if (appearance.IsNull() || !appearance.ToColor(colour)) {
            return "";
        }
        std::ostringstream text;
        text << " rgba";
        for (std::size_t i = 0; i < 4; ++i) {
            text << ' ' << std::lround(colour[i] * 255.0F);
        }
        return text.str();
    }

    int totalTriangles = 0;

private:
    static double Rounded(double value) { return std::round(value * 1000.0) / 1000.0 + 0.0; }
    static std::string Number(double value)
    {
        std::ostringstream text;
        text << "real " << value;
        return text.str();
    }
    void Line(const char* kind, const ModelData_SceneGraphElement& element)
    {
        myText << std::string(2 * myDepth, ' ') << kind << " '" << element.Name().ToUTF8() << "'"
               << Colour(element.Appearance());
        element.Properties().Accept(*this);
    }
    bool Open(const char* kind, const ModelData_SceneGraphElement& element)
    {
        Line(kind, element);
        myText << '\n';
        ++myDepth;
        return true;
    }
    void Property(const Base_UTF16String& name, const std::string& value)
    {
        myText << " [" << name.ToUTF8() << " = " << value << "]";
    }

    std::ostringstream myText;
    std::size_t myDepth = 0;
};

} // namespace cadex::test
