// The entity types that the IFC reader knows by name. Every other type in a file is Type::Other: an object of
// an unknown type still stands in the tree when it has an object's shape (see IfcTree.cpp), anything else is
// skipped.
#pragma once

#include <cstdint>
#include <string_view>

namespace cadex::ifc {

// clang-format off
#define CADEX_IFC_TYPES(X) \
    /* points, directions, placements */ \
    X(CartesianPoint) X(CartesianPointList2D) X(CartesianPointList3D) X(Direction) X(Vector) \
    X(Axis1Placement) X(Axis2Placement2D) X(Axis2Placement3D) X(LocalPlacement) X(GridPlacement) X(VirtualGridIntersection) \
    X(CartesianTransformationOperator2D) X(CartesianTransformationOperator2DNonUniform) \
    X(CartesianTransformationOperator3D) X(CartesianTransformationOperator3DNonUniform) \
    /* curves */ \
    X(Line) X(Circle) X(Ellipse) X(Polyline) X(TrimmedCurve) X(CompositeCurve) X(CompositeCurveOnSurface) \
    X(BoundaryCurve) X(OuterBoundaryCurve) X(CompositeCurveSegment) X(ReparametrisedCompositeCurveSegment) \
    X(2DCompositeCurve) X(IndexedPolyCurve) X(BezierCurve) X(RationalBezierCurve) X(BSplineCurveWithKnots) \
    X(RationalBSplineCurveWithKnots) X(OffsetCurve2D) X(OffsetCurve3D) X(SurfaceCurve) X(SeamCurve) \
    X(IntersectionCurve) \
    /* profiles */ \
    X(RectangleProfileDef) X(RoundedRectangleProfileDef) X(RectangleHollowProfileDef) X(TrapeziumProfileDef) \
    X(CircleProfileDef) X(CircleHollowProfileDef) X(EllipseProfileDef) X(IShapeProfileDef) \
    X(AsymmetricIShapeProfileDef) X(LShapeProfileDef) X(TShapeProfileDef) X(UShapeProfileDef) X(CShapeProfileDef) \
    X(ZShapeProfileDef) X(ArbitraryClosedProfileDef) X(ArbitraryProfileDefWithVoids) X(ArbitraryOpenProfileDef) \
    X(CenterLineProfileDef) X(CompositeProfileDef) X(DerivedProfileDef) X(MirroredProfileDef) \
    /* surfaces */ \
    X(Plane) X(CylindricalSurface) X(SphericalSurface) X(ToroidalSurface) X(SurfaceOfLinearExtrusion) \
    X(SurfaceOfRevolution) X(BSplineSurfaceWithKnots) X(RationalBSplineSurfaceWithKnots) X(CurveBoundedPlane) \
    X(CurveBoundedSurface) X(RectangularTrimmedSurface) \
    /* topology */ \
    X(Face) X(FaceSurface) X(AdvancedFace) X(FaceBound) X(FaceOuterBound) X(PolyLoop) X(EdgeLoop) X(OrientedEdge) \
    X(EdgeCurve) X(Edge) X(VertexPoint) X(ClosedShell) X(OpenShell) X(ConnectedFaceSet) \
    /* solids and sets */ \
    X(ExtrudedAreaSolid) X(ExtrudedAreaSolidTapered) X(RevolvedAreaSolid) X(RevolvedAreaSolidTapered) \
    X(FixedReferenceSweptAreaSolid) X(SurfaceCurveSweptAreaSolid) X(SweptDiskSolid) X(SweptDiskSolidPolygonal) \
    X(FacetedBrep) X(FacetedBrepWithVoids) X(AdvancedBrep) X(AdvancedBrepWithVoids) X(BooleanResult) \
    X(BooleanClippingResult) X(CsgSolid) X(Block) X(RectangularPyramid) X(RightCircularCone) \
    X(RightCircularCylinder) X(Sphere) X(HalfSpaceSolid) X(BoxedHalfSpace) X(PolygonalBoundedHalfSpace) \
    X(BoundingBox) X(FaceBasedSurfaceModel) X(ShellBasedSurfaceModel) X(TriangulatedFaceSet) \
    X(TriangulatedIrregularNetwork) X(PolygonalFaceSet) X(IndexedPolygonalFace) X(IndexedPolygonalFaceWithVoids) \
    X(GeometricSet) X(GeometricCurveSet) X(MappedItem) X(AnnotationFillArea) \
    /* representations */ \
    X(ShapeRepresentation) X(TopologyRepresentation) X(RepresentationMap) X(ProductDefinitionShape) \
    /* styles */ \
    X(StyledItem) X(AnnotationCurveOccurrence) X(AnnotationFillAreaOccurrence) X(AnnotationSurfaceOccurrence) \
    X(StyledRepresentation) X(PresentationStyleAssignment) X(SurfaceStyle) X(SurfaceStyleShading) \
    X(SurfaceStyleRendering) X(CurveStyle) X(FillAreaStyle) X(ColourRgb) X(DraughtingPreDefinedColour) \
    X(IndexedColourMap) X(ColourRgbList) X(PresentationLayerWithStyle) X(Material) X(MaterialDefinitionRepresentation) \
    X(MaterialLayer) X(MaterialLayerSet) X(MaterialLayerSetUsage) X(MaterialList) X(MaterialProfile) \
    X(MaterialProfileSet) X(MaterialProfileSetUsage) X(MaterialConstituent) X(MaterialConstituentSet) \
    /* relations */ \
    X(RelAggregates) X(RelNests) X(RelContainedInSpatialStructure) X(RelVoidsElement) X(RelDefinesByProperties) \
    X(RelDefinesByType) X(RelAssociatesMaterial) X(RelDeclares) \
    /* objects that are treated apart */ \
    X(Project) X(ProjectLibrary) X(Space) X(OpeningElement) X(OpeningStandardCase) X(VoidingFeature) X(Annotation) \
    X(Grid) X(GridAxis) X(VirtualElement) X(DistributionPort) \
    /* properties */ \
    X(PropertySet) X(PropertySingleValue) X(PropertyEnumeratedValue) X(PropertyListValue) X(PropertyBoundedValue) \
    X(PropertyTableValue) X(PropertyReferenceValue) X(ComplexProperty) X(ElementQuantity) X(QuantityLength) \
    X(QuantityArea) X(QuantityVolume) X(QuantityCount) X(QuantityWeight) X(QuantityTime) X(QuantityNumber) \
    X(PhysicalComplexQuantity) \
    /* units */ \
    X(UnitAssignment) X(SIUnit) X(ConversionBasedUnit) X(ConversionBasedUnitWithOffset) X(ContextDependentUnit) \
    X(MeasureWithUnit) X(DerivedUnit) X(DerivedUnitElement) X(MonetaryUnit)
// clang-format on

enum class Type : std::uint16_t
{
    Other,
#define CADEX_IFC_ENUMERATOR(name) Ifc##name,
    CADEX_IFC_TYPES(CADEX_IFC_ENUMERATOR)
#undef CADEX_IFC_ENUMERATOR
        Count
};

/// The type of an upper-case name as files write it ("IFCWALL"); Other when it is not among the known ones.
Type TypeOf(std::string_view upperCaseName);

/// The name of an object's type in the spelling of the schema ("IfcWallStandardCase"). A type that is newer
/// than this table keeps the file's upper-case spelling.
std::string_view DisplayName(std::string_view upperCaseName);

/// Sites, buildings, storeys, spaces and their kin: places, which are nodes even when they are empty.
bool IsSpatial(std::string_view upperCaseName);

} // namespace cadex::ifc
