#include "tests/sdk/SeedFiles.h"

#include <regex>

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRepToIGES_BREntity.hxx>
#include <BRep_Builder.hxx>
#include <IGESBasic_Group.hxx>
#include <IGESBasic_Name.hxx>
#include <IGESBasic_SingularSubfigure.hxx>
#include <IGESBasic_SubfigureDef.hxx>
#include <IGESControl_Controller.hxx>
#include <IGESControl_Writer.hxx>
#include <IGESData_GlobalSection.hxx>
#include <IGESData_HArray1OfIGESEntity.hxx>
#include <IGESData_IGESModel.hxx>
#include <IGESGeom_TransformationMatrix.hxx>
#include <Interface_Static.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_Printer.hxx>
#include <Quantity_ColorRGBA.hxx>
#include <STEPCAFControl_Controller.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <TColStd_HArray2OfReal.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS_Compound.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include "tests/sdk/MeshModels.h"
#include "tests/sdk/ReadModels.h"

namespace cadex::test {
namespace {

Handle(TCollection_HAsciiString) Text(const char* text)
{
    return new TCollection_HAsciiString(text);
}

TopoDS_Shape HollowBox()
{
    return BRepAlgoAPI_Cut(
               BRepPrimAPI_MakeBox(10, 20, 30).Shape(),
               BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(5, 10, -1), gp_Dir(0, 0, 1)), 3, 40).Shape())
        .Shape();
}

TopoDS_Shape Mixture()
{
    TopoDS_Compound all;
    const BRep_Builder builder;
    builder.MakeCompound(all);
    builder.Add(all, BRepPrimAPI_MakeTorus(20, 5).Shape());
    builder.Add(all, TopExp_Explorer(BRepPrimAPI_MakeBox(5, 5, 5).Shape(), TopAbs_FACE).Current());
    builder.Add(all, BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(0, 0, 50)).Edge());
    return all;
}

Seed StepOf(bool assembly, bool facets)
{
    Handle(TDocStd_Document) document;
    XCAFApp_Application::GetApplication()->NewDocument("BinXCAF", document);
    const auto shapes = XCAFDoc_DocumentTool::ShapeTool(document->Main());
    const auto colours = XCAFDoc_DocumentTool::ColorTool(document->Main());
    const TopoDS_Shape box = facets ? BRepPrimAPI_MakeBox(10, 20, 30).Shape() : HollowBox();
    const TDF_Label part = shapes->AddShape(box, false);
    TDataStd_Name::Set(part, "Box");
    colours->SetColor(part, Quantity_ColorRGBA(Quantity_Color(0.2, 0.4, 0.6, Quantity_TOC_sRGB), 0.5F),
                      XCAFDoc_ColorGen);
    if (assembly) {
        const TDF_Label other = shapes->AddShape(Mixture(), false);
        const TDF_Label root = shapes->NewShape();
        gp_Trsf aside;
        aside.SetTranslation(gp_Vec(100, 0, 0));
        TDataStd_Name::Set(other, "Mixture");
        TDataStd_Name::Set(shapes->AddComponent(root, part, TopLoc_Location()), "first");
        const TDF_Label second = shapes->AddComponent(root, part, TopLoc_Location(aside));
        TDataStd_Name::Set(second, "second");
        TDataStd_Name::Set(shapes->AddComponent(root, other, TopLoc_Location()), "third");
        colours->SetColor(second, Quantity_Color(Quantity_NOC_GREEN), XCAFDoc_ColorGen);
        shapes->UpdateAssemblies();
    }
    const ScratchFolder folder;
    const std::string file = (folder.Path() / "seed.stp").string();
    STEPCAFControl_Writer writer;
    writer.Transfer(document, facets ? STEPControl_FacetedBrep : STEPControl_AsIs);
    writer.Write(file.c_str());
    XCAFApp_Application::GetApplication()->Close(document);
    return {std::regex_replace(BytesOf(file), std::regex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}"),
                               "2024-05-06T07:08:09"),
            ".stp"};
}

template <typename Fill>
Seed IgesOf(const char* unit, int mode, Fill fill)
{
    Interface_Static::SetCVal("write.iges.unit", unit);
    IGESControl_Writer writer(unit, mode);
    fill(writer);
    writer.ComputeModel();
    // The same bytes for every user on every day.
    IGESData_GlobalSection global = writer.Model()->GlobalSection();
    global.SetAuthorName(Text("author"));
    global.SetDate(Text("20240506.070809"));
    global.SetLastChangeDate(Text("20240506.070809"));
    writer.Model()->SetGlobalSection(global);
    const ScratchFolder folder;
    const std::string file = (folder.Path() / "seed.igs").string();
    writer.Write(file.c_str());
    Interface_Static::SetCVal("write.iges.unit", "MM");
    return {BytesOf(file), ".igs"};
}

Handle(IGESData_IGESEntity) EntityOf(IGESControl_Writer& writer, const TopoDS_Shape& shape)
{
    BRepToIGES_BREntity converter;
    converter.SetModel(writer.Model());
    return converter.TransferShape(shape);
}

void Name(const Handle(IGESData_IGESEntity) & entity, const char* text)
{
    Handle(IGESBasic_Name) name = new IGESBasic_Name;
    name->Init(1, Text(text));
    entity->AddProperty(name);
}

void Initialise()
{
    Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_Printer));
    STEPCAFControl_Controller::Init();
    IGESControl_Controller::Init();
}

void AddReal(std::vector<Seed>& seeds, const char* file)
{
    if (std::filesystem::exists(file)) {
        seeds.push_back(
            {BytesOf(file), std::filesystem::path(file).extension() == ".iges" ? ".igs" : ".stp"});
    }
}

} // namespace

std::vector<Seed> StepSeeds()
{
    Initialise();
    std::vector<Seed> seeds = {StepOf(false, false), StepOf(true, false), StepOf(false, true)};
    seeds.push_back({BytesOf(ZEMTAR_SOURCE_DIR "/examples/pump.step"), ".stp"});
    AddReal(seeds, "/usr/share/opencascade/data/step/screw.step");
    return seeds;
}

std::vector<Seed> IgesSeeds()
{
    Initialise();
    std::vector<Seed> seeds = {{BytesOf(ZEMTAR_SOURCE_DIR "/examples/bracket.igs"), ".igs"},
                               IgesSubfigures(false)};
    seeds.push_back(IgesOf("MM", 0, [](IGESControl_Writer& writer) {
        Handle(IGESData_HArray1OfIGESEntity) members = new IGESData_HArray1OfIGESEntity(1, 2);
        members->SetValue(1, EntityOf(writer, HollowBox()));
        members->SetValue(
            2, EntityOf(writer, BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(0, 0, 50)).Edge()));
        Handle(IGESBasic_Group) group = new IGESBasic_Group;
        group->Init(members);
        Name(group, "Group");
        writer.AddEntity(group);
        writer.AddShape(Mixture());
    }));
    return seeds;
}

Seed IgesSubfigures(bool inches)
{
    Initialise();
    return IgesOf(inches ? "INCH" : "MM", 0, [inches](IGESControl_Writer& writer) {
        const double size = inches ? 25.4 : 1.0; // the kernel's shapes are in millimetres
        const auto box = EntityOf(writer, BRepPrimAPI_MakeBox(10 * size, 20 * size, 30 * size).Shape());
        Handle(IGESData_HArray1OfIGESEntity) members = new IGESData_HArray1OfIGESEntity(1, 1);
        members->SetValue(1, box);
        Handle(IGESBasic_SubfigureDef) definition = new IGESBasic_SubfigureDef;
        definition->Init(0, Text("Block"), members);
        definition->InitStatus(0, 0, 2, 1);
        const auto use = [&](const gp_XYZ& at, double scale) {
            Handle(IGESBasic_SingularSubfigure) instance = new IGESBasic_SingularSubfigure;
            instance->Init(definition, at, scale != 1.0, scale);
            return instance;
        };
        const auto first = use(gp_XYZ(100, 0, 0), 1.0);
        Name(first, "First");
        const auto scaled = use(gp_XYZ(0, 100, 0), 2.0);
        Handle(TColStd_HArray2OfReal) values = new TColStd_HArray2OfReal(1, 3, 1, 4, 0.0);
        values->SetValue(1, 1, -1.0);
        values->SetValue(2, 2, 1.0);
        values->SetValue(3, 3, 1.0);
        values->SetValue(1, 4, -50.0);
        Handle(IGESGeom_TransformationMatrix) mirror = new IGESGeom_TransformationMatrix;
        mirror->Init(values);
        mirror->SetFormNumber(1);
        const auto mirrored = use(gp_XYZ(0, 0, 0), 1.0);
        mirrored->InitTransf(mirror);
        // An entity must be complete when it is added.
        for (const auto& instance : {first, scaled, mirrored}) {
            writer.AddEntity(instance);
        }
    });
}

} // namespace cadex::test
