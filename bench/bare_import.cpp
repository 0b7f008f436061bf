// The program that a newcomer to OpenCASCADE writes to read a CAD file: read and transfer through XCAF with
// names and colours, mesh each unique shape, and copy the triangles into flat arrays with surface normals.
// Nothing is tuned, repaired or guarded: it is what the engine's own reading is measured against.
#include "bench/bare_import.h"

#include <cctype>

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Tool.hxx>
#include <GeomLib.hxx>
#include <IGESCAFControl_Reader.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_Printer.hxx>
#include <Poly_Triangulation.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

namespace {

constexpr double RelativeChord = 0.0076;
constexpr double AngleDegrees = 24.0;
constexpr double RadiansPerDegree = 3.14159265358979323846 / 180.0;

template <typename Reader>
bool ReadInto(Handle(TDocStd_Document) & document, const std::string& path)
{
    Reader reader;
    reader.SetNameMode(true);
    reader.SetColorMode(true);
    reader.SetLayerMode(false);
    return reader.ReadFile(path.c_str()) == IFSelect_RetDone && reader.Transfer(document);
}

void Extract(const TopoDS_Shape& shape, BareMesh& mesh)
{
    for (TopExp_Explorer faces(shape, TopAbs_FACE); faces.More(); faces.Next()) {
        const TopoDS_Face& face = TopoDS::Face(faces.Current());
        TopLoc_Location location;
        const Handle(Poly_Triangulation) triangulation = BRep_Tool::Triangulation(face, location);
        if (triangulation.IsNull()) {
            continue;
        }
        const Handle(Geom_Surface) surface = BRep_Tool::Surface(face);
        const gp_Trsf placement = location.Transformation();
        const bool reversed = face.Orientation() == TopAbs_REVERSED;
        const int base = static_cast<int>(mesh.positions.size() / 3);
        for (int i = 1; i <= triangulation->NbNodes(); ++i) {
            const gp_Pnt point = triangulation->Node(i).Transformed(placement);
            gp_Dir normal(0.0, 0.0, 1.0);
            GeomLib::NormEstim(surface, triangulation->UVNode(i), Precision::Confusion(), normal);
            if (reversed) {
                normal.Reverse();
            }
            mesh.positions.insert(mesh.positions.end(), {point.X(), point.Y(), point.Z()});
            mesh.normals.insert(mesh.normals.end(),
                                {static_cast<float>(normal.X()), static_cast<float>(normal.Y()),
                                 static_cast<float>(normal.Z())});
        }
        for (int i = 1; i <= triangulation->NbTriangles(); ++i) {
            int a = 0;
            int b = 0;
            int c = 0;
            triangulation->Triangle(i).Get(a, b, c);
            if (reversed) {
                std::swap(b, c);
            }
            mesh.indices.insert(mesh.indices.end(), {base + a - 1, base + b - 1, base + c - 1});
        }
    }
}

} // namespace

BareMesh BareImport(const std::string& path)
{
    Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_Printer));
    Handle(TDocStd_Document) document;
    XCAFApp_Application::GetApplication()->NewDocument("BinXCAF", document);
    const std::string extension = path.substr(path.find_last_of('.') + 1);
    const bool iges = !extension.empty() && std::tolower(static_cast<unsigned char>(extension[0])) == 'i';
    BareMesh mesh;
    mesh.read = iges ? ReadInto<IGESCAFControl_Reader>(document, path)
                     : ReadInto<STEPCAFControl_Reader>(document, path);
    const Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(document->Main());
    TDF_LabelSequence labels;
    shapes->GetShapes(labels);
    for (const TDF_Label& label : labels) {
        if (XCAFDoc_ShapeTool::IsAssembly(label) || !XCAFDoc_ShapeTool::IsSimpleShape(label)) {
            continue;
        }
        const TopoDS_Shape shape = XCAFDoc_ShapeTool::GetShape(label);
        BRepMesh_IncrementalMesh mesher(shape, RelativeChord, true, AngleDegrees * RadiansPerDegree);
        Extract(shape, mesh);
    }
    XCAFApp_Application::GetApplication()->Close(document);
    return mesh;
}
