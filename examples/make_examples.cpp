// Makes the CAD files of this folder. They are committed; run this again only to change them:
//
//     cmake --build build/release --target make_examples && build/release/bin/make_examples examples
//
// pump.step: a coloured pump with nested assemblies, shared bolts, a transparent cover, colours on single
// faces, a loose curve, names in several scripts and user-defined properties. bracket.igs: a solid with a
// coloured face, in inches. (house.ifc is no product of a program: it was written as text.)
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include <APIHeaderSection_MakeHeader.hxx>
#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRepPrimAPI_MakeRevol.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <IGESCAFControl_Writer.hxx>
#include <IGESControl_Controller.hxx>
#include <IGESData_GlobalSection.hxx>
#include <IGESData_IGESModel.hxx>
#include <Interface_Static.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_Printer.hxx>
#include <Quantity_ColorRGBA.hxx>
#include <STEPCAFControl_Controller.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <StepData_StepModel.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Vertex.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <gp_Ax1.hxx>
#include <gp_Ax2.hxx>

#include "sdk/part21/ClearText.h"
#include "sdk/step/StepStructure.h"

namespace {

constexpr double Pi = 3.14159265358979323846;
const gp_Ax1 Axis(gp_Pnt(0, 0, 0), gp_Dir(0, 0, 1));

TopoDS_Shape Cylinder(double radius, double bottom, double height, double x = 0.0, double y = 0.0)
{
    return BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(x, y, bottom), gp_Dir(0, 0, 1)), radius, height).Shape();
}

TopoDS_Shape Fuse(const TopoDS_Shape& a, const TopoDS_Shape& b)
{
    return BRepAlgoAPI_Fuse(a, b).Shape();
}

TopoDS_Shape Cut(const TopoDS_Shape& a, const TopoDS_Shape& b)
{
    return BRepAlgoAPI_Cut(a, b).Shape();
}

// Outline (radius, height) turned about the axis.
TopoDS_Shape Revolve(const std::vector<std::array<double, 2>>& outline)
{
    BRepBuilderAPI_MakePolygon polygon;
    for (const auto& [radius, height] : outline) {
        polygon.Add(gp_Pnt(radius, 0, height));
    }
    polygon.Close();
    return BRepPrimAPI_MakeRevol(BRepBuilderAPI_MakeFace(polygon.Wire()).Shape(), Axis).Shape();
}

TopLoc_Location At(double x, double y, double z, double turn = 0.0)
{
    gp_Trsf rotation;
    rotation.SetRotation(Axis, turn);
    gp_Trsf translation;
    translation.SetTranslation(gp_Vec(x, y, z));
    return TopLoc_Location(translation * rotation);
}

template <typename Make>
TopoDS_Shape CutAround(TopoDS_Shape shape, int count, double radius, Make tool)
{
    for (int i = 0; i < count; ++i) {
        const double angle = 2 * Pi * i / count;
        shape = Cut(shape, tool(radius * std::cos(angle), radius * std::sin(angle)));
    }
    return shape;
}

// Axis upwards; the seat of the cover is at height 40.
TopoDS_Shape Housing()
{
    TopoDS_Shape shape = Revolve({{8, 0},
                                  {44, 0},
                                  {44, 6},
                                  {30, 10},
                                  {34, 14},
                                  {50, 18},
                                  {50, 34},
                                  {58, 34},
                                  {58, 40},
                                  {42, 40},
                                  {42, 16},
                                  {24, 16},
                                  {24, 8},
                                  {8, 8}});
    const gp_Ax2 side(gp_Pnt(0, 30, 25), gp_Dir(1, 0, 0));
    const TopoDS_Shape pipe = BRepPrimAPI_MakeCylinder(side, 11, 78).Shape();
    const gp_Ax2 end(gp_Pnt(72, 30, 25), gp_Dir(1, 0, 0));
    const TopoDS_Shape flange = BRepPrimAPI_MakeCylinder(end, 19, 6).Shape();
    shape = Fuse(Fuse(shape, Cut(pipe, Cylinder(46, 0, 60))), flange);
    shape = Cut(shape, BRepPrimAPI_MakeCylinder(side, 7.5, 90).Shape());
    return CutAround(shape, 8, 53, [](double x, double y) { return Cylinder(2.6, 30, 20, x, y); });
}

TopoDS_Shape Cover()
{
    TopoDS_Shape shape = Revolve({{12, 0}, {12, 14}, {16, 14}, {18, 6}, {58, 6}, {58, 0}});
    return CutAround(shape, 8, 53, [](double x, double y) { return Cylinder(3.3, -1, 10, x, y); });
}

TopoDS_Shape Shaft()
{
    const TopoDS_Shape shape =
        Revolve({{0, 0}, {6, 0}, {6, 40}, {7.9, 40}, {7.9, 62}, {6, 62}, {6, 88}, {5, 90}, {0, 90}});
    return Cut(shape, BRepPrimAPI_MakeBox(gp_Pnt(3.5, -2, 66), 10, 4, 18).Shape());
}

TopoDS_Shape Impeller()
{
    TopoDS_Shape shape = Revolve({{6, 0}, {38, 0}, {38, 2}, {14, 4}, {11, 16}, {6, 16}});
    for (int i = 0; i < 7; ++i) {
        TopoDS_Shape blade =
            BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(25, 14, 1), gp_Dir(0, 0, 1)), 20, 9).Shape();
        blade = Cut(blade,
                    BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(25, 14, 0), gp_Dir(0, 0, 1)), 18.2, 12).Shape());
        blade = Cut(blade, BRepPrimAPI_MakeBox(gp_Pnt(-60, 4, -1), 160, 80, 20).Shape());
        blade = Cut(Cut(blade, Cylinder(8, -1, 20)), Cut(Cylinder(90, -1, 20), Cylinder(37.5, -2, 30)));
        shape = Fuse(shape, blade.Moved(At(0, 0, 0, 2 * Pi * i / 7)));
    }
    return shape;
}

TopoDS_Shape HexPrism(double acrossFlats, double bottom, double height)
{
    BRepBuilderAPI_MakePolygon hexagon;
    for (int i = 0; i < 6; ++i) {
        const double radius = acrossFlats / std::sqrt(3.0);
        hexagon.Add(gp_Pnt(radius * std::cos(Pi * i / 3), radius * std::sin(Pi * i / 3), bottom));
    }
    hexagon.Close();
    return BRepPrimAPI_MakePrism(BRepBuilderAPI_MakeFace(hexagon.Wire()).Shape(), gp_Vec(0, 0, height))
        .Shape();
}

TopoDS_Shape Bolt()
{
    const TopoDS_Shape head = HexPrism(8, 0, 3.5);
    return Fuse(head, Revolve({{0, 0}, {2.5, 0}, {2.5, -13.5}, {2, -14}, {0, -14}}));
}

TopoDS_Shape Curve()
{
    TopoDS_Compound curves;
    const BRep_Builder builder;
    builder.MakeCompound(curves);
    builder.Add(curves, BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, -15), gp_Pnt(0, 0, 110)).Edge());
    return curves;
}

struct Builder
{
    Builder()
    {
        XCAFApp_Application::GetApplication()->NewDocument("BinXCAF", document);
        shapes = XCAFDoc_DocumentTool::ShapeTool(document->Main());
        colours = XCAFDoc_DocumentTool::ColorTool(document->Main());
    }

    static void Name(const TDF_Label& label, const char* utf8)
    {
        TDataStd_Name::Set(label, TCollection_ExtendedString(utf8, true));
    }

    TDF_Label Part(const char* name, const TopoDS_Shape& shape, double r, double g, double b,
                   float alpha = 1.0F)
    {
        const TDF_Label label = shapes->AddShape(shape, false);
        Name(label, name);
        Colour(label, r, g, b, alpha);
        return label;
    }

    void Colour(const TDF_Label& label, double r, double g, double b, float alpha = 1.0F) const
    {
        const Quantity_Color colour(r, g, b, Quantity_TOC_sRGB);
        colours->SetColor(label, Quantity_ColorRGBA(colour, alpha), XCAFDoc_ColorGen);
    }

    // Colours every face whose bounding plane test is met.
    template <typename Test>
    void ColourFaces(const TDF_Label& part, double r, double g, double b, Test test) const
    {
        for (TopExp_Explorer faces(XCAFDoc_ShapeTool::GetShape(part), TopAbs_FACE); faces.More();
             faces.Next()) {
            if (test(TopoDS::Face(faces.Current()))) {
                colours->SetColor(shapes->AddSubShape(part, faces.Current()),
                                  Quantity_Color(r, g, b, Quantity_TOC_sRGB), XCAFDoc_ColorSurf);
            }
        }
    }

    TDF_Label Assembly(const char* name) const
    {
        const TDF_Label label = shapes->NewShape();
        Name(label, name);
        return label;
    }

    TDF_Label Place(const TDF_Label& assembly, const TDF_Label& child, const std::string& name,
                    const TopLoc_Location& location) const
    {
        const TDF_Label label = shapes->AddComponent(assembly, child, location);
        Name(label, name.c_str());
        return label;
    }

    Handle(TDocStd_Document) document;
    Handle(XCAFDoc_ShapeTool) shapes;
    Handle(XCAFDoc_ColorTool) colours;
};

bool IsFlatAt(const TopoDS_Face& face, double height)
{
    bool flat = true;
    for (TopExp_Explorer vertices(face, TopAbs_VERTEX); vertices.More(); vertices.Next()) {
        const gp_Pnt point = BRep_Tool::Pnt(TopoDS::Vertex(vertices.Current()));
        flat = flat && std::abs(point.Z() - height) < 1e-6;
    }
    return flat;
}

void BuildPump(Builder& b)
{
    const TDF_Label housing = b.Part("Gehäuse", Housing(), 0.16, 0.33, 0.52);
    b.ColourFaces(housing, 0.80, 0.82, 0.84, [](const TopoDS_Face& face) { return IsFlatAt(face, 40.0); });
    const TDF_Label cover = b.Part("Deckel (Sichtglas)", Cover(), 0.55, 0.78, 0.90, 0.35F);
    const TDF_Label shaft = b.Part("Вал", Shaft(), 0.72, 0.72, 0.75);
    const TDF_Label impeller = b.Part("叶轮", Impeller(), 0.85, 0.55, 0.20);
    const TDF_Label seal =
        b.Part("O-Ring 84×2", BRepPrimAPI_MakeTorus(gp_Ax2(), 42, 1).Shape(), 0.08, 0.08, 0.08);
    const TDF_Label bolt = b.Part("Schraube M5×14", Bolt(), 0.60, 0.60, 0.62);
    const TDF_Label washer =
        b.Part("Scheibe 5,3", Cut(Cylinder(5, 0, 1), Cylinder(2.65, -1, 3)), 0.90, 0.80, 0.35);
    const TDF_Label axis = b.Part("Achse", Curve(), 0.85, 0.10, 0.10);

    const TDF_Label rotor = b.Assembly("Läufer ロータ");
    b.Place(rotor, shaft, "Welle", At(0, 0, 0));
    b.Place(rotor, impeller, "Laufrad", At(0, 0, 24));
    const TDF_Label screwed = b.Assembly("Schraube mit Scheibe");
    b.Place(screwed, bolt, "Schraube", At(0, 0, 1));
    b.Place(screwed, washer, "Scheibe", At(0, 0, 0));
    const TDF_Label circle = b.Assembly("Schraubenkranz 8×M5");
    for (int i = 0; i < 8; ++i) {
        const double angle = 2 * Pi * i / 8;
        b.Place(circle, screwed, "Schraube " + std::to_string(i + 1),
                At(53 * std::cos(angle), 53 * std::sin(angle), 0, angle));
    }
    const TDF_Label pump = b.Assembly("Kreiselpumpe ポンプ");
    b.Place(pump, housing, "Gehäuse", At(0, 0, 0));
    b.Place(pump, rotor, "Läufer", At(0, 0, -6));
    b.Place(pump, seal, "Dichtung", At(0, 0, 40));
    b.Place(pump, cover, "Deckel", At(0, 0, 41));
    b.Place(pump, circle, "Verschraubung", At(0, 0, 47));
    b.Place(pump, axis, "Mittellinie", At(0, 0, 0));
    b.shapes->UpdateAssemblies();
}

// Everything outside ASCII as \X2\ directives, so that the file reads the same in every locale.
std::string Escape(const std::string& utf8)
{
    std::string text;
    for (std::size_t i = 0; i < utf8.size();) {
        const auto first = static_cast<unsigned char>(utf8[i]);
        if (first < 0x80) {
            text += utf8[i++];
            continue;
        }
        const int length = first < 0xE0 ? 2 : 3; // the names here lie in the basic plane
        unsigned code = length == 2 ? first & 0x1FU : first & 0x0FU;
        for (int k = 1; k < length; ++k) {
            code = (code << 6U) | (static_cast<unsigned char>(utf8[i + static_cast<std::size_t>(k)]) & 0x3FU);
        }
        std::array<char, 16> digits{};
        std::snprintf(digits.data(), digits.size(), "%04X", code);
        constexpr const char* close = "\\X0\\";
        const bool continues = text.size() > 4 && text.compare(text.size() - 4, 4, close) == 0;
        text.resize(text.size() - (continues ? 4 : 0));
        text += (continues ? "" : "\\X2\\") + std::string(digits.data()) + close;
        i += static_cast<std::size_t>(length);
    }
    return text;
}

// Appends records of properties: each a name and the record of its item behind the name.
class PropertyWriter
{
public:
    explicit PropertyWriter(const cadex::part21::ClearText& text)
    {
        for (const auto& record : text.Records()) {
            m_next = std::max<cadex::part21::RecordId>(m_next, record.id + 1);
            bool found = false;
            text.Arguments(record.id, "GEOMETRIC_REPRESENTATION_CONTEXT", found);
            m_context = found ? record.id : m_context;
        }
    }

    void Add(cadex::part21::RecordId owner, const std::vector<std::array<std::string, 3>>& items)
    {
        std::string list;
        for (const auto& [type, name, value] : items) {
            list += (list.empty() ? "#" : ",#") + std::to_string(m_next);
            std::string record = type;
            record.append("('").append(name).append("',").append(value).append(")");
            Record(record);
        }
        Record("REPRESENTATION('user defined attributes',(" + list + "),#" + std::to_string(m_context) + ")");
        Record("PROPERTY_DEFINITION('user defined attribute',$,#" + std::to_string(owner) + ")");
        Record("PROPERTY_DEFINITION_REPRESENTATION(#" + std::to_string(m_next - 1) + ",#" +
               std::to_string(m_next - 2) + ")");
    }

    std::string records;

private:
    void Record(const std::string& content)
    {
        records += "#" + std::to_string(m_next++) + " = " + content + ";\n";
    }

    cadex::part21::RecordId m_next = 1;
    cadex::part21::RecordId m_context = 0;
};

bool AddProperties(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    in.close();
    cadex::part21::ClearText text;
    cadex::step::StepStructure structure;
    if (!text.Load(bytes) || !structure.Build(text)) {
        return false;
    }
    std::map<std::string, cadex::part21::RecordId> ids;
    for (const auto& product : structure.products) {
        ids[product.name.ToUTF8()] = product.definition;
    }
    for (const auto& instance : structure.instances) {
        ids["@" + instance.name.ToUTF8()] = instance.usage;
    }
    const std::string text1 = "DESCRIPTIVE_REPRESENTATION_ITEM";
    PropertyWriter writer(text);
    writer.Add(ids.at("Kreiselpumpe ポンプ"), {{text1, "Auftrag", "'2024-117 \"Nordkai\"'"},
                                               {"INTEGER_REPRESENTATION_ITEM", "Drehzahl", "2900"},
                                               {"REAL_REPRESENTATION_ITEM", "Leistung", "1.5"},
                                               {"BOOLEAN_REPRESENTATION_ITEM", "Freigegeben", ".T."}});
    writer.Add(ids.at("Gehäuse"), {{text1, "Werkstoff", "'EN-GJL-250'"},
                                   {"VALUE_REPRESENTATION_ITEM", "Dichte", "NUMERIC_MEASURE(7200.)"}});
    writer.Add(ids.at("Вал"), {{text1, "Материал", "'Сталь 45'"}});
    writer.Add(ids.at("叶轮"), {{text1, "材料", "'CuSn10'"}, {"INTEGER_REPRESENTATION_ITEM", "叶片数", "7"}});
    writer.Add(ids.at("Schraube M5×14"), {{text1, "Norm", "'ISO 4017'"}});
    writer.Add(ids.at("@Deckel"), {{text1, "Hinweis", "'mit 6 Nm anziehen'"}});
    const std::size_t end = bytes.rfind("ENDSEC;");
    bytes.insert(end, writer.records);
    std::ofstream out(path, std::ios::binary);
    out << Escape(bytes);
    return static_cast<bool>(out.flush());
}

bool WritePump(const std::string& path)
{
    Builder builder;
    BuildPump(builder);
    Interface_Static::SetIVal("write.surfacecurve.mode", 0);
    STEPCAFControl_Writer writer;
    writer.SetNameMode(true);
    writer.SetColorMode(true);
    if (!writer.Transfer(builder.document, STEPControl_AsIs)) {
        return false;
    }
    APIHeaderSection_MakeHeader header(writer.ChangeWriter().Model());
    const auto text = [](const char* value) { return new TCollection_HAsciiString(value); };
    header.SetName(text("pump.step"));
    header.SetTimeStamp(text("2024-05-06T07:08:09"));
    header.SetAuthorValue(1, text("Design office"));
    header.SetOrganizationValue(1, text("Pump works"));
    header.SetOriginatingSystem(text("make_examples"));
    return writer.Write(path.c_str()) == IFSelect_RetDone && AddProperties(path);
}

bool WriteBracket(const std::string& path)
{
    TopoDS_Shape shape =
        Fuse(BRepPrimAPI_MakeBox(50.8, 25.4, 6.35).Shape(), BRepPrimAPI_MakeBox(6.35, 25.4, 38.1).Shape());
    const TopoDS_Shape corner = BRepPrimAPI_MakeBox(gp_Pnt(6.35, 0, 6.35), 5, 25.4, 5).Shape();
    const gp_Ax2 along(gp_Pnt(11.35, 0, 11.35), gp_Dir(0, 1, 0));
    shape = Fuse(shape, Cut(corner, BRepPrimAPI_MakeCylinder(along, 5, 25.4).Shape()));
    shape = Cut(Cut(shape, Cylinder(5, -1, 10, 35, 12.7)), Cylinder(3, -1, 10, 22, 12.7));
    Builder builder;
    const TDF_Label part = builder.Part("Bracket", shape, 0.45, 0.60, 0.45);
    builder.ColourFaces(part, 0.90, 0.35, 0.20, [](const TopoDS_Face& face) { return IsFlatAt(face, 0.0); });
    Interface_Static::SetCVal("write.iges.unit", "INCH");
    Interface_Static::SetIVal("write.iges.brep.mode", 1);
    IGESCAFControl_Writer writer;
    writer.SetNameMode(true);
    writer.SetColorMode(true);
    if (!writer.Transfer(builder.document)) {
        return false;
    }
    IGESData_GlobalSection global = writer.Model()->GlobalSection();
    const auto text = [](const char* value) { return new TCollection_HAsciiString(value); };
    global.SetAuthorName(text("Design office"));
    global.SetCompanyName(text("Pump works"));
    global.SetSendName(text("bracket"));
    global.SetSystemId(text("make_examples"));
    global.SetDate(text("20240506.070809"));
    global.SetLastChangeDate(text("20240506.070809"));
    writer.Model()->SetGlobalSection(global);
    return writer.Write(path.c_str());
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: make_examples FOLDER\n";
        return 2;
    }
    Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_Printer));
    XCAFDoc_ShapeTool::SetAutoNaming(false);
    STEPCAFControl_Controller::Init();
    IGESControl_Controller::Init();
    const std::string folder = argv[1];
    const bool done = WritePump(folder + "/pump.step") && WriteBracket(folder + "/bracket.igs");
    std::cerr << (done ? "" : "could not write the examples\n");
    return done ? 0 : 1;
}
