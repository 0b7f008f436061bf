// The exporter against an engine that only keeps the model it is given.

#include "cadexchange/CZemtarCADExchangeWriter.h"
#include "cadexchange/CZemtarCADExchangeWriterHandler.h"
#include "host/CZemtar3DObject.h"
#include "host/CZemtarBasicMaterial.h"
#include "host/CZemtarCommonBasicMaterial.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMaterial.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarTransformNode.h"
#include "sdk/model/EngineRegistry.h"

#include <cadex/JT_Writer.hxx>
#include <cadex/JT_WriterParameters.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include <gtest/gtest.h>

#include <sstream>

using namespace Zemtar;
using cadex::internal::EngineRegistry;
using cadex::internal::Format;
using Writer = CZemtarCADExchangeWriter;

namespace {

std::string Narrow(const cadex::Base_UTF16String& text)
{
    return CZemtarString(text.ToWString()).toStdString();
}

/// Writes a model as one line of text: names, placements, and the size of meshes.
struct Dump : cadex::ModelData_Model::VoidElementVisitor, cadex::ModelData_PropertyTable::Visitor
{
    std::ostringstream out;

    void Describe(const cadex::ModelData_SceneGraphElement& element)
    {
        out << Narrow(element.Name());
        if (!element.Properties().IsNull()) {
            element.Properties().Accept(*this);
        }
    }
    void operator()(const cadex::ModelData_Part& part) override
    {
        Describe(part);
        cadex::ModelData_Material look;
        if (part.Appearance().ToMaterial(look)) {
            out << " rgba " << look.DiffuseColor().R() << "," << look.DiffuseColor().G() << ","
                << look.DiffuseColor().B() << "," << look.DiffuseColor().A();
        }
        const auto mesh = part.PolyRepresentation(cadex::ModelData_RM_Poly);
        for (std::size_t i = 0; i < mesh.Get().Size(); ++i) {
            out << " mesh of " << mesh.Get()[i].NumberOfVertices();
        }
    }
    bool VisitEnter(const cadex::ModelData_Assembly& assembly) override
    {
        Describe(assembly);
        out << "{";
        return true;
    }
    void VisitLeave(const cadex::ModelData_Assembly&) override { out << "}"; }
    bool VisitEnter(const cadex::ModelData_Instance& instance) override
    {
        const cadex::ModelData_Transformation& t = instance.Transformation();
        out << " [" << Narrow(instance.Name()) << " x" << t.ScaleFactor() << " at " << t.Data(0, 3) << "] ";
        return true;
    }
    void VisitLeave(const cadex::ModelData_Instance&) override {}

    void operator()(const cadex::Base_UTF16String& name, const cadex::Base_UTF16String& value) override
    {
        out << " " << Narrow(name) << "=" << Narrow(value);
    }
    void operator()(const cadex::Base_UTF16String&, cadex::I32) override {}
    void operator()(const cadex::Base_UTF16String&, cadex::I64) override {}
    void operator()(const cadex::Base_UTF16String&, float) override {}
    void operator()(const cadex::Base_UTF16String&, double) override {}
    void operator()(const cadex::Base_UTF16String&, cadex::ModelData_PropertyTable::TimeType) override {}
    void operator()(const cadex::Base_UTF16String&, const cadex::ModelData_Point&) override {}
    void operator()(const cadex::Base_UTF16String&, const cadex::ModelData_Box&) override {}
};

class ExportTest : public testing::Test
{
protected:
    struct Engine : cadex::internal::WriterEngine
    {
        ExportTest& test;
        explicit Engine(ExportTest& owner) : test(owner) {}
        bool Transfer(const cadex::ModelData_Model& model,
                      const cadex::Base_WriterParameters& parameters) override
        {
            test.unit = parameters.LengthUnit();
            Dump dump;
            model.Accept(dump);
            test.written = dump.out.str();
            return test.transferWorks;
        }
        bool WriteFile(const std::filesystem::path&) override { return test.writeWorks; }
    };

    ExportTest()
        : before(EngineRegistry::Instance().SetWriter(Format::STEP,
                                                      [this] { return std::make_unique<Engine>(*this); }))
    {
    }
    ~ExportTest() override { EngineRegistry::Instance().SetWriter(Format::STEP, before); }

    CZemtarSceneNode* Group(const char* name, CZemtarSceneNode* parent, double x,
                            CZemtarSceneNode::enumNodeType type = CZemtarSceneNode::eNodeTypeGroup)
    {
        return Placed(CZemtarTransformNode::Create(document.get()), name, parent, x, type);
    }
    CZemtar3DObject* Mesh(const char* name, CZemtarSceneNode* parent, double x,
                          const CZemtarGeometry* geometry)
    {
        auto* object = CZemtar3DObject::Create(document.get());
        object->SetGeometry(geometry);
        Placed(object, name, parent, x, CZemtarSceneNode::eNodeTypeGroup);
        return object;
    }
    CZemtarGeometry* Triangle()
    {
        auto* geometry = CZemtarGeometry::Create(document.get());
        auto* vertices = CZemtarVerticiesTable::Create(document.get(), true);
        for (const double x : {0.0, 1.0, 2.0}) {
            vertices->Append(x, x * x, 0.25);
        }
        geometry->SetVerticiesTable(vertices);
        geometry->SetPolygonsTable(CZemtarPolygonsTable::Create(document.get()));
        geometry->PolygonsTable()->Append(0, 1, 2);
        return geometry;
    }
    /// Exports as STEP; gives what was written to standard error.
    std::string Export(Writer::eWriterType type = Writer::eWriterSTEP, const char* file = "/a.b/engine.step")
    {
        Writer writer;
        writer.SetCADWriterType(type);
        testing::internal::CaptureStderr();
        EXPECT_FALSE(writer.Export(document.get(), file, nullptr, nullptr, nullptr, nullptr,
                                   CZemtarUnit(eLengthUnitInch)));
        return testing::internal::GetCapturedStderr();
    }

    std::unique_ptr<CZemtarDocument> document{CZemtarDocument::Create(true)};
    cadex::internal::WriterFactory before;
    bool transferWorks = true;
    bool writeWorks = true;
    std::string written;
    cadex::Base_LengthUnit unit = cadex::Base_LU_Miles;

private:
    CZemtarSceneNode* Placed(CZemtarSceneNode* node, const char* name, CZemtarSceneNode* parent, double x,
                             CZemtarSceneNode::enumNodeType type)
    {
        CZemtarMatrix matrix;
        matrix.M(0, 3) = x;
        node->SetName(name);
        node->SetNodeType(type);
        node->SetLocalMatrix(matrix);
        if (parent) {
            node->SetParent(parent);
        }
        return node;
    }
};

} // namespace

TEST_F(ExportTest, FacadeReportsItsFailures)
{
    EXPECT_EQ(Export(Writer::eWriterNone), "");
    for (const Writer::eWriterType type : {Writer::eWriterCreo, Writer::eWriterNX, Writer::eWriterSolidWorks,
                                           static_cast<Writer::eWriterType>(11)}) {
        EXPECT_EQ(Export(type), "Writer is NULL!\n");
    }
    EXPECT_EQ(written, "");
    EXPECT_EQ(Export(), "");
    EXPECT_EQ(written, "engine{}");
    EXPECT_EQ(unit, cadex::Base_LU_Inches);
    writeWorks = false;
    EXPECT_EQ(Export(Writer::eWriterSTEP, "/größe.stp"), "Failed to write the file /größe.stp\n");
    transferWorks = false;
    EXPECT_EQ(Export(), "Failed to transfer model data to specified format\n");
    document.reset();
    EXPECT_EQ(Export(), "");
}

TEST_F(ExportTest, UnitsAndJTSplitReachTheWriter)
{
    const int expected[] = {2, 2, 6, 0, 1, 7, 2, 2, 2, 8, 2, 2, 2, 9, 3, 4, 5, 2, 2, 10, 2};
    for (int unitNumber = 0; unitNumber <= 20; ++unitNumber) {
        EXPECT_EQ(Writer::TranslateUnit(static_cast<enumLengthUnit>(unitNumber)), expected[unitNumber])
            << unitNumber;
    }
    using Parameters = cadex::JT_WriterParameters;
    for (const auto& [method, mode] :
         {std::pair{0, Parameters::Monolithic}, std::pair{1, Parameters::PerPart},
          std::pair{2, Parameters::Monolithic}}) {
        Writer writer;
        writer.SetCADWriterType(Writer::eWriterJT);
        writer.SetJTExportMethod(method);
        const std::unique_ptr<cadex::Base_Writer> made(writer.GetCADWriter(eLengthUnitFoot));
        const Parameters& parameters = dynamic_cast<cadex::JT_Writer&>(*made).Parameters();
        EXPECT_EQ(parameters.FileSplitMode(), mode);
        EXPECT_EQ(parameters.PolyRepresentationUnit(), cadex::Base_LU_Feets);
        EXPECT_EQ(parameters.LengthUnit(), cadex::Base_LU_Millimeters);
    }
}

TEST_F(ExportTest, TreeBecomesAssembliesPartsAndSharedInstances)
{
    CZemtarGeometry* shared = Triangle();
    auto* assembly = Group("car", nullptr, 1.0, CZemtarSceneNode::eNodeTypeAssembly);
    assembly->MetaData()->SetValue("1", "x", "B", "");
    assembly->MetaData()->SetValue("2", "y", "A", "");
    auto* group = Group("transparent", assembly, 10.0);
    auto* part = Group("wheel", group, 100.0, CZemtarSceneNode::eNodeTypePart);
    CZemtar3DObject* first = Mesh("rim", part, 1000.0, shared);
    first->SetMaterial(CZemtarMaterial::Create(document.get()));
    first->Material()->BasicMaterialAsGeneralMaterial()->SetDiffuseColor({0.25, 0.5, 0.75, 0.5});
    Mesh("again", assembly, 2.0, shared)->SetMaterial(nullptr);
    Mesh("top", nullptr, 3.0, shared);
    Mesh("hollow", part, 0.0, nullptr);
    Group("gone", nullptr, 0.0, CZemtarSceneNode::eNodeTypeAssembly)->SetDeleted(true);
    EXPECT_EQ(Export(), "");
    EXPECT_EQ(written, "engine{ [car x1000 at 0] car y=2 x=1{"
                       " [wheel x1 at 0] wheel{ [rim x1 at 1111] rim rgba 0.25,0.5,0.75,0.5 mesh of 3}"
                       " [again x1 at 3] rim rgba 0.25,0.5,0.75,0.5 mesh of 3}"
                       " [top x1000 at 3000] rim rgba 0.25,0.5,0.75,0.5 mesh of 3}");
}

TEST_F(ExportTest, MeshesKeepTheirTables)
{
    auto* handler = CZemtarCADExchangeWriterHandler::getInstance();
    CZemtar3DObject* object = Mesh("m", nullptr, 0.0, Triangle());
    CZemtarGeometry* geometry = object->EditableGeometry();
    const unsigned quad[] = {2, 1, 0, 1};
    geometry->PolygonsTable()->AppendPolygon(quad, 4);
    geometry->PolygonsTable()->Append(0, 1, 77);
    auto* normals = CZemtarVerticiesNormalsTable::Create(document.get(), true);
    geometry->SetVerticiesNormalsTable(normals);
    auto triangles = handler->CreateITS(object);
    ASSERT_TRUE(triangles);
    EXPECT_EQ(triangles->NumberOfFaces(), 2); // the third names a missing vertex
    EXPECT_FALSE(triangles->HasNormals());
    EXPECT_EQ(triangles->Coordinate(1, 0).Y(), 4.0);

    auto* uvs = CZemtarTextureCoordinatesTable::Create(document.get(), true);
    for (int i = 0; i < 3; ++i) {
        normals->Append(0.0, 0.1, i);
        uvs->Append(0.25, 0.75 + i);
    }
    object->SetTextureCoordinatesTable(uvs);
    triangles = handler->CreateITS(object);
    EXPECT_EQ(triangles->VertexNormal(1, 0).Z(), 2.0f);
    EXPECT_EQ(triangles->UVCoordinate(0, 1).Y(), 1.75);

    // An empty polygons table leaves the place to the poly-lines.
    geometry->SetPolygonsTable(CZemtarPolygonsTable::Create(document.get()));
    EXPECT_EQ(handler->CreateITS(object), nullptr);
    EXPECT_EQ(handler->CreatePolyLineSet(object), nullptr);
    auto* lines = CZemtarPolyLinesTable::Create(document.get());
    geometry->SetPolyLinesTable(lines);
    lines->Append(0, 1);
    lines->Append(1, 2);
    lines->Append(1, 3);
    const auto set = handler->CreatePolyLineSet(object);
    ASSERT_EQ(set->NumberOfPolyLines(), 2); // the last one names a missing vertex
    EXPECT_EQ(set->NumberOfVertices(1), 2);
    EXPECT_EQ(set->Coordinate(1, 1).Y(), 4.0);
    EXPECT_EQ(Export(), "");
    EXPECT_EQ(written, "engine{ [m x1000 at 0] m mesh of 4}");
}

TEST_F(ExportTest, MaterialsAreSharedAndOnlyCommonOnesExported)
{
    auto* handler = CZemtarCADExchangeWriterHandler::getInstance();
    handler->reset();
    CZemtarMaterial* material = CZemtarMaterial::Create(document.get());
    cadex::ModelData_Appearance* appearance = handler->CreateMaterial(material);
    EXPECT_EQ(handler->CreateMaterial(material), appearance);
    CZemtarMaterial* flat = CZemtarMaterial::Create(document.get());
    flat->SetBasicMaterial(CZemtarBasicMaterial::Create(document.get()));
    EXPECT_EQ(handler->CreateMaterial(flat), nullptr);
    flat->SetBasicMaterial(material->BasicMaterial());
    EXPECT_NE(handler->CreateMaterial(flat), nullptr); // the refusal was not remembered
    EXPECT_EQ(handler->CreateMaterial(nullptr), nullptr);
}
