#include "tests/sdk/step/XcafReadback.h"

#include <BRepGProp.hxx>
#include <BRepTools_WireExplorer.hxx>
#include <BRep_Tool.hxx>
#include <GProp_GProps.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_Printer.hxx>
#include <Quantity_ColorRGBA.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <sstream>

namespace cadex {

namespace {

std::string NameOf(const TDF_Label& label)
{
    Handle(TDataStd_Name) name;
    if (!label.FindAttribute(TDataStd_Name::GetID(), name)) {
        return "(none)";
    }
    const TCollection_ExtendedString& text = name->Get();
    std::string utf8(static_cast<std::size_t>(text.LengthOfCString()), '\0');
    Standard_PCharacter place = utf8.data();
    text.ToUTF8CString(place);
    return utf8;
}

void AddTree(const TDF_Label& label, const std::string& indent, std::string& tree)
{
    tree += indent + (XCAFDoc_ShapeTool::IsAssembly(label) ? "assembly " : "part ") + NameOf(label) + '\n';
    TDF_LabelSequence components;
    XCAFDoc_ShapeTool::GetComponents(label, components);
    for (const TDF_Label& component : components) {
        TDF_Label referred;
        XCAFDoc_ShapeTool::GetReferredShape(component, referred);
        tree += indent + " instance " + NameOf(component) + '\n';
        AddTree(referred, indent + "  ", tree);
    }
}

std::array<double, 3> PointOf(const TopoDS_Vertex& vertex)
{
    const gp_Pnt point = BRep_Tool::Pnt(vertex);
    return {point.X(), point.Y(), point.Z()};
}

void AddGeometry(const TopoDS_Shape& shape, XcafReadback& result)
{
    for (TopExp_Explorer faces(shape, TopAbs_FACE); faces.More(); faces.Next()) {
        const TopoDS_Face& face = TopoDS::Face(faces.Current());
        Corners corners;
        for (BRepTools_WireExplorer wire(TopoDS::Wire(TopoDS_Iterator(face).Value()), face); wire.More();
             wire.Next()) {
            corners.push_back(PointOf(wire.CurrentVertex()));
        }
        result.triangles.push_back(corners);
    }
    for (TopExp_Explorer edges(shape, TopAbs_EDGE, TopAbs_FACE); edges.More(); edges.Next()) {
        Corners ends;
        for (TopExp_Explorer ends_(edges.Current(), TopAbs_VERTEX); ends_.More(); ends_.Next()) {
            ends.push_back(PointOf(TopoDS::Vertex(ends_.Current())));
        }
        result.edges.push_back(ends);
    }
    for (TopExp_Explorer solids(shape, TopAbs_SOLID); solids.More(); solids.Next()) {
        GProp_GProps mass;
        BRepGProp::VolumeProperties(solids.Current(), mass);
        result.volume += mass.Mass();
        ++result.solids;
    }
}

void AddColors(const TDF_Label& part, const Handle(XCAFDoc_ColorTool) & tool,
               std::vector<std::string>& colors)
{
    static const char* kinds[] = {"compound", "compsolid", "solid", "shell",
                                  "face",     "wire",      "edge",  "vertex"};
    TDF_LabelSequence labels;
    XCAFDoc_ShapeTool::GetSubShapes(part, labels);
    labels.Append(part);
    for (const TDF_Label& label : labels) {
        for (const XCAFDoc_ColorType type : {XCAFDoc_ColorSurf, XCAFDoc_ColorCurv}) {
            Quantity_ColorRGBA color;
            if (tool->GetColor(label, type, color)) {
                double r = 0;
                double g = 0;
                double b = 0;
                color.GetRGB().Values(r, g, b, Quantity_TOC_sRGB);
                std::ostringstream text;
                text.precision(6);
                text << kinds[XCAFDoc_ShapeTool::GetShape(label).ShapeType()] << ' ' << r << ' ' << g << ' '
                     << b << ' ' << color.Alpha();
                colors.push_back(text.str());
            }
        }
    }
}

} // namespace

XcafReadback::XcafReadback(const std::filesystem::path& file)
{
    Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_Printer));
    XCAFDoc_ShapeTool::SetAutoNaming(false);
    Handle(TDocStd_Document) document;
    XCAFApp_Application::GetApplication()->NewDocument("BinXCAF", document);
    STEPCAFControl_Reader reader;
    reader.SetNameMode(true);
    reader.SetColorMode(true);
    ok = reader.ReadFile(file.c_str()) == IFSelect_RetDone && reader.Transfer(document);
    if (ok) {
        const auto shapes = XCAFDoc_DocumentTool::ShapeTool(document->Main());
        const auto colorTool = XCAFDoc_DocumentTool::ColorTool(document->Main());
        TDF_LabelSequence labels;
        shapes->GetFreeShapes(labels);
        for (const TDF_Label& root : labels) {
            AddTree(root, "", tree);
            AddGeometry(XCAFDoc_ShapeTool::GetShape(root), *this);
        }
        shapes->GetShapes(labels);
        for (const TDF_Label& label : labels) {
            if (!XCAFDoc_ShapeTool::IsAssembly(label)) {
                ++parts;
                AddColors(label, colorTool, colors);
            }
        }
    }
    XCAFApp_Application::GetApplication()->Close(document);
}

} // namespace cadex
