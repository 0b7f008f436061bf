// Validation properties and the way to kernel shapes.
#include <cmath>

#include <gtest/gtest.h>

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepGProp.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRep_Builder.hxx>
#include <GProp_GProps.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Shell.hxx>

#include <cadex/ModelAlgo_ValidationProperty.hxx>
#include <cadex/ModelData_ShapeConverter.hxx>

#include "tests/sdk/MeshModels.h"

using namespace cadex;
using namespace cadex::test;

namespace {

bool Compute(const ModelData_SceneGraphElement& element, ModelAlgo_ValidationPropertyData& data)
{
    return ModelAlgo_ValidationProperty::ComputeValidationProperties(element, data);
}

bool IsKnown(const TopoDS_Shape& shape)
{
    ModelAlgo_ValidationPropertyData data;
    return Compute(ShapePart(shape), data);
}

void ExpectData(const ModelAlgo_ValidationPropertyData& data, double volume, double area,
                const std::array<double, 3>& centroid)
{
    EXPECT_NEAR(data.Volume(), volume, 1e-6 * volume);
    EXPECT_NEAR(data.SurfaceArea(), area, 1e-6 * area);
    EXPECT_NEAR(data.Centroid().X(), centroid[0], 1e-6);
    EXPECT_NEAR(data.Centroid().Y(), centroid[1], 1e-6);
    EXPECT_NEAR(data.Centroid().Z(), centroid[2], 1e-6);
}

double VolumeOf(const TopoDS_Shape& shape)
{
    GProp_GProps properties;
    BRepGProp::VolumeProperties(shape, properties);
    return properties.Mass();
}

TopoDS_Compound CompoundOf(std::initializer_list<TopoDS_Shape> shapes)
{
    BRep_Builder builder;
    TopoDS_Compound compound;
    builder.MakeCompound(compound);
    for (const TopoDS_Shape& shape : shapes) {
        builder.Add(compound, shape);
    }
    return compound;
}

/// The shell of a box without its last `missing` faces.
TopoDS_Shell Shell(const TopoDS_Shape& box, int missing)
{
    BRep_Builder builder;
    TopoDS_Shell shell;
    builder.MakeShell(shell);
    int number = 0;
    for (TopExp_Explorer it(box, TopAbs_FACE); it.More() && number < 6 - missing; it.Next(), ++number) {
        builder.Add(shell, it.Current());
    }
    shell.Closed(missing == 0);
    return shell;
}

TEST(ValidationProperty, SolidsTogetherAndTurnedInsideOut)
{
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(gp_Pnt(1e5, 0, 0), 10, 20, 30).Shape();
    ModelAlgo_ValidationPropertyData data;
    ASSERT_TRUE(Compute(ShapePart(box), data));
    ExpectData(data, 6000, 2200, {1e5 + 5, 10, 15});
    ASSERT_TRUE(Compute(ShapePart(box.Reversed()), data));
    ExpectData(data, 6000, 2200, {1e5 + 5, 10, 15});
    ASSERT_TRUE(Compute(ShapePart(Shell(box, 0)), data));
    EXPECT_NEAR(data.Volume(), 6000, 1e-6);

    // A sheet and a curve beside the solids count nothing; two solids sum up.
    const TopoDS_Shape other = BRepPrimAPI_MakeBox(gp_Pnt(0, 0, 100), 10, 20, 30).Shape();
    const TopoDS_Shape edge = BRepBuilderAPI_MakeEdge(gp_Pnt(), gp_Pnt(1, 1, 1)).Edge();
    ASSERT_TRUE(Compute(ShapePart(CompoundOf({BRepPrimAPI_MakeBox(10, 20, 30).Shape(), other.Reversed(), edge,
                                              Shell(box, 3)})),
                        data));
    EXPECT_NEAR(data.Volume(), 12000, 1e-6);
    EXPECT_NEAR(data.Centroid().Z(), 65, 1e-9);

    ASSERT_TRUE(Compute(ShapePart(BRepPrimAPI_MakeSphere(gp_Pnt(1, 2, 3), 10).Shape()), data));
    ExpectData(data, 4000 * M_PI / 3, 400 * M_PI, {1, 2, 3});
}

TEST(ValidationProperty, WhatHasNoVolumeHasNone)
{
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(1, 1, 1).Shape();
    EXPECT_FALSE(IsKnown(Shell(box, 1)));
    EXPECT_FALSE(IsKnown(TopExp_Explorer(box, TopAbs_FACE).Current()));
    EXPECT_FALSE(IsKnown(BRepBuilderAPI_MakeEdge(gp_Pnt(), gp_Pnt(1, 1, 1)).Edge()));
    EXPECT_FALSE(IsKnown(CompoundOf({})));

    BRep_Builder builder;
    TopoDS_Solid open;
    builder.MakeSolid(open);
    builder.Add(open, Shell(box, 1));
    EXPECT_FALSE(IsKnown(CompoundOf({box, open})));

    // A face and its back: closed, and empty.
    const TopoDS_Shape face = TopExp_Explorer(box, TopAbs_FACE).Current();
    TopoDS_Shell flat;
    builder.MakeShell(flat);
    builder.Add(flat, face);
    builder.Add(flat, face.Reversed());
    TopoDS_Solid nothing;
    builder.MakeSolid(nothing);
    builder.Add(nothing, flat);
    EXPECT_FALSE(IsKnown(nothing));

    ModelAlgo_ValidationPropertyData data;
    data.Volume() = 7;
    EXPECT_FALSE(Compute(MeshPart(MakeSet({{{0, 0, 0}, {1, 1, 1}}})), data));
    EXPECT_FALSE(Compute(ModelData_Part("empty"), data));
    EXPECT_FALSE(Compute(ModelData_Part(), data));
    EXPECT_EQ(data.Volume(), 7);
}

TEST(ValidationProperty, FacetsAreExactAndAssembliesAddUp)
{
    const ModelData_Part part = FacetedBox(true);
    ModelAlgo_ValidationPropertyData data;
    ASSERT_TRUE(Compute(part, data));
    ExpectData(data, 6000, 2200, {5, 10, 15});
    EXPECT_NEAR(VolumeOf(ModelData_ShapeConverter::Convert(part)), 6000, 1e-9);

    ModelData_Assembly assembly("assembly");
    assembly.AddInstance(ModelData_Instance(part));
    assembly.AddInstance(
        ModelData_Instance(part, Transformation({0, -1, 0, 1, 0, 0, 0, 0, 1}, {0, 0, 100}, 2)));
    assembly.AddInstance(ModelData_Instance(ModelData_Part("without a B-rep")));
    ASSERT_TRUE(Compute(assembly, data));
    ExpectData(data, 6000 + 48000, 2200 + 8800, {(5. - 8 * 20) / 9, (10. + 8 * 10) / 9, (15. + 8 * 230) / 9});
    EXPECT_NEAR(VolumeOf(ModelData_ShapeConverter::Convert(assembly)), 54000, 1e-6);

    assembly.AddInstance(ModelData_Instance(FacetedBox(false)));
    EXPECT_FALSE(Compute(assembly, data));
}

TEST(ShapeConverter, GivesThePartsOwnShapeOrACompoundWithPlacements)
{
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(1, 2, 3).Shape();
    const ModelData_Part part = ShapePart(box);
    EXPECT_TRUE(ModelData_ShapeConverter::Convert(part).IsEqual(box));
    EXPECT_TRUE(ModelData_ShapeConverter::Convert(ModelData_Part("empty")).IsNull());
    EXPECT_TRUE(ModelData_ShapeConverter::Convert(ModelData_Part()).IsNull());

    ModelData_Assembly assembly("assembly");
    assembly.AddInstance(ModelData_Instance(part, Transformation(NoRotation, {10, 0, 0})));
    assembly.AddInstance(ModelData_Instance(part, Transformation({-1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0})));
    assembly.AddInstance(ModelData_Instance(part, Transformation({1, 1, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0})));
    const TopoDS_Shape all = ModelData_ShapeConverter::Convert(ModelOf(assembly));
    ASSERT_EQ(all.ShapeType(), TopAbs_COMPOUND);
    EXPECT_NEAR(VolumeOf(all), 18, 1e-6);
    EXPECT_FALSE(TopExp_Explorer(all, TopAbs_SOLID).Current().Location().IsIdentity());
}

} // namespace
