#include "sdk/step/StepWriter.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

#include <cadex/ModelData_Part.hxx>
#include <cadex/internal/Progress.hxx>

#include "sdk/mesh/EngineTolerances.h"
#include "sdk/model/Elements.h"
#include "sdk/step/StepPropertyWriter.h"
#include "sdk/step/StepShapes.h"
#include "sdk/text/LengthUnits.h"

namespace cadex::step {

using mesh::Identity3;
using part21::Part21Header;
using part21::Part21TimeStamp;
using part21::Raw;
using part21::TypedReal;
using part21::Xyz;
using text::LengthUnitOf;
using text::LengthUnitText;

namespace {

std::string_view RepresentationType(const std::vector<StepShapeItem>& items)
{
    const auto all = [&](StepShapeKind kind) {
        return std::all_of(items.begin(), items.end(),
                           [kind](const StepShapeItem& item) { return item.kind == kind; });
    };
    if (items.empty()) {
        return "SHAPE_REPRESENTATION";
    }
    return all(StepShapeKind::Solid)     ? "FACETED_BREP_SHAPE_REPRESENTATION"
           : all(StepShapeKind::Surface) ? "MANIFOLD_SURFACE_SHAPE_REPRESENTATION"
           : all(StepShapeKind::Curves)  ? "GEOMETRICALLY_BOUNDED_WIREFRAME_SHAPE_REPRESENTATION"
                                         : "SHAPE_REPRESENTATION";
}

} // namespace

StepWriter::StepWriter(ByteSink& sink, const ExportPlan& plan, const ExportOptions& options)
    : myOut(sink),
      myStyles(myOut),
      myPlan(plan),
      myOptions(options),
      myUnitsPerMillimetre(1 / LengthUnitOf(options.unit).millimetres),
      myProducts(plan.definitions.size())
{
}

bool StepWriter::Write()
{
    Part21Header header;
    header.description = "Product structure with faceted shapes";
    header.fileName = myOptions.fileName;
    header.timeStamp = Part21TimeStamp();
    header.author = myOptions.author;
    header.organization = myOptions.organization;
    header.preprocessor = "cadex open engine";
    header.originatingSystem = myOptions.originatingSystem;
    header.schema = "AUTOMOTIVE_DESIGN { 1 0 10303 214 1 1 1 1 }";
    myOut.BeginFile(header);
    WriteCommon();
    const std::size_t count = myPlan.order.size();
    for (std::size_t i = 0; i < count && myOut.Ok() && internal::Progress::GoesOn(i, count); ++i) {
        const internal::ProgressRange step(i, count);
        WriteDefinition(myPlan.order[i]);
    }
    return myOut.EndFile() && !internal::Progress::IsCancelled();
}

void StepWriter::WriteCommon()
{
    const Ref application =
        myOut.Add("APPLICATION_CONTEXT", "core data for automotive mechanical design processes");
    myOut.Add("APPLICATION_PROTOCOL_DEFINITION", "international standard", "automotive_design", 2000,
              application);
    myProductContext = myOut.Add("PRODUCT_CONTEXT", "", application, "mechanical");
    myDefinitionContext = myOut.Add("PRODUCT_DEFINITION_CONTEXT", "part definition", application, "design");

    myUnits[0] = WriteLengthUnit();
    myUnits[1] = myOut.Reserve();
    myOut.Begin(myUnits[1]);
    myOut.Text("(NAMED_UNIT(*)PLANE_ANGLE_UNIT()SI_UNIT($,.RADIAN.))");
    myOut.End();
    myUnits[2] = myOut.Reserve();
    myOut.Begin(myUnits[2]);
    myOut.Text("(NAMED_UNIT(*)SI_UNIT($,.STERADIAN.)SOLID_ANGLE_UNIT())");
    myOut.End();
    myUncertainty = myOut.Add("UNCERTAINTY_MEASURE_WITH_UNIT",
                              TypedReal{"LENGTH_MEASURE", tolerance::Coincident * myUnitsPerMillimetre},
                              myUnits[0], "distance_accuracy_value", "confusion accuracy");

    myZero = myOut.Add("CARTESIAN_POINT", "", Xyz{});
    for (std::size_t i = 0; i < 6; ++i) {
        const double value = i < 3 ? 1 : -1;
        myAxes[i] = myOut.Add("DIRECTION", "",
                              Xyz{i % 3 == 0 ? value : 0, i % 3 == 1 ? value : 0, i % 3 == 2 ? value : 0});
    }
}

Ref StepWriter::WriteLengthUnit()
{
    const LengthUnitText& entry = LengthUnitOf(myOptions.unit);
    const std::string_view prefix = entry.prefix.empty() ? ".MILLI." : entry.prefix;
    const Ref metric = myOut.Reserve();
    myOut.Begin(metric);
    myOut.Text("(LENGTH_UNIT()NAMED_UNIT(*)");
    myOut.Record("SI_UNIT", Raw{prefix}, Raw{".METRE."});
    myOut.Text(")");
    myOut.End();
    if (!entry.prefix.empty()) {
        return metric;
    }
    const Ref dimension = myOut.Add("DIMENSIONAL_EXPONENTS", 1., 0., 0., 0., 0., 0., 0.);
    const Ref measure =
        myOut.Add("LENGTH_MEASURE_WITH_UNIT", TypedReal{"LENGTH_MEASURE", entry.millimetres}, metric);
    const Ref converted = myOut.Reserve();
    myOut.Begin(converted);
    myOut.Text("(");
    myOut.Record("CONVERSION_BASED_UNIT", entry.name, measure);
    myOut.Text("LENGTH_UNIT()");
    myOut.Record("NAMED_UNIT", dimension);
    myOut.Text(")");
    myOut.End();
    return converted;
}

// A context of its own for each representation: those on the two sides of a placement must differ (ISO
// 10303-43, representation_relationship_with_transformation).
Ref StepWriter::AddContext()
{
    const Ref context = myOut.Reserve();
    myOut.Begin(context);
    myOut.Text("(GEOMETRIC_REPRESENTATION_CONTEXT(3)");
    myOut.Record("GLOBAL_UNCERTAINTY_ASSIGNED_CONTEXT", std::array{myUncertainty});
    myOut.Record("GLOBAL_UNIT_ASSIGNED_CONTEXT", std::array{myUnits[0], myUnits[1], myUnits[2]});
    myOut.Text("REPRESENTATION_CONTEXT('',''))");
    myOut.End();
    return context;
}

Ref StepWriter::DirectionOf(double x, double y, double z)
{
    const double values[3] = {x, y, z};
    for (std::size_t i = 0; i < 3; ++i) {
        if (std::abs(values[i]) == 1 && values[(i + 1) % 3] == 0 && values[(i + 2) % 3] == 0) {
            return myAxes[values[i] > 0 ? i : i + 3];
        }
    }
    return myOut.Add("DIRECTION", "", Xyz{x, y, z});
}

Ref StepWriter::AddAxis(const Matrix3& rotation, const Vector3& position)
{
    const Ref point =
        position == Vector3{}
            ? myZero
            : myOut.Add("CARTESIAN_POINT", "",
                        Xyz{position[0] * myUnitsPerMillimetre, position[1] * myUnitsPerMillimetre,
                            position[2] * myUnitsPerMillimetre});
    const Ref z = DirectionOf(rotation[2], rotation[5], rotation[8]);
    const Ref x = DirectionOf(rotation[0], rotation[3], rotation[6]);
    return myOut.Add("AXIS2_PLACEMENT_3D", "", point, z, x);
}

void StepWriter::WriteDefinition(std::size_t index)
{
    const ExportPlan::Definition& definition = myPlan.definitions[index];
    Product& product = myProducts[index];
    BeginProduct(product, definition.element.IsNull() ? myPlan.modelName : definition.element.Name());
    if (definition.element.IsOfType<ModelData_Part>()) {
        WritePart(definition, product);
    } else {
        WriteAssembly(definition, product);
    }
    WriteStepProperties(myOut, definition.element.Properties(), product.definition, product.context);
}

void StepWriter::BeginProduct(Product& product, const Base_UTF16String& name)
{
    product.context = AddContext();
    product.origin = AddAxis(Identity3, {});
    const Ref item = myOut.Add("PRODUCT", name, name, "", std::array{myProductContext});
    myOut.Add("PRODUCT_RELATED_PRODUCT_CATEGORY", "part", Ref(), std::array{item});
    const Ref formation = myOut.Add("PRODUCT_DEFINITION_FORMATION", "", "", item);
    product.definition = myOut.Add("PRODUCT_DEFINITION", "design", "", formation, myDefinitionContext);
    const Ref shape = myOut.Add("PRODUCT_DEFINITION_SHAPE", "", "", product.definition);
    product.representation = myOut.Reserve();
    myOut.Add("SHAPE_DEFINITION_REPRESENTATION", shape, product.representation);
}

void StepWriter::WritePart(const ExportPlan::Definition& definition, Product& product)
{
    Matrix3 linear = definition.residual;
    for (double& value : linear) {
        value *= myUnitsPerMillimetre;
    }
    const auto& part = static_cast<const ModelData_Part&>(definition.element);
    const ModelData_PolyShapeList& shapes = part.PolyRepresentation(ModelData_RM_Poly).Get();
    std::vector<StepShapeItem> items;
    for (std::size_t i = 0; i < shapes.Size(); ++i) {
        const ModelData_PolyVertexSet& shape = shapes[i];
        const std::size_t first = items.size();
        if (shape.IsOfType<ModelData_IndexedTriangleSet>()) {
            WriteStepMesh(myOut, *static_cast<TriangleSetImpl*>(shape.Impl()), linear, items);
        } else if (shape.IsOfType<ModelData_PolyLineSet>()) {
            WriteStepPolyLines(myOut, *static_cast<PolyLineSetImpl*>(shape.Impl()), linear, items);
        }
        const ModelData_Appearance own = shape.Appearance();
        for (std::size_t k = first; k < items.size(); ++k) {
            myStyles.Apply(own.IsNull() ? part.Appearance() : own,
                           items[k].kind == StepShapeKind::Curves ? StepStyleWriter::Kind::Curve
                                                                  : StepStyleWriter::Kind::Surface,
                           items[k].ref);
        }
    }
    std::vector<Ref> refs{product.origin};
    for (const StepShapeItem& item : items) {
        refs.push_back(item.ref);
    }
    myOut.AddAs(product.representation, RepresentationType(items), "", refs, product.context);
    myStyles.EndRepresentation(product.context);
}

void StepWriter::WriteAssembly(const ExportPlan::Definition& definition, Product& product)
{
    std::vector<Ref> axes{product.origin};
    for (const ExportPlan::Occurrence& occurrence : definition.occurrences) {
        axes.push_back(AddAxis(occurrence.rotation, occurrence.translation));
    }
    myOut.AddAs(product.representation, "SHAPE_REPRESENTATION", "", axes, product.context);
    for (std::size_t i = 0; i < definition.occurrences.size() && myOut.Ok(); ++i) {
        WriteOccurrence(definition.occurrences[i], product, axes[i + 1]);
    }
}

void StepWriter::WriteOccurrence(const ExportPlan::Occurrence& occurrence, const Product& parent, Ref axis)
{
    const Product& child = myProducts[occurrence.definition];
    const Base_UTF16String name = occurrence.instance.Name();
    // Readers show the id of an occurrence without a name.
    const std::string id = name.IsEmpty() ? std::string() : std::to_string(++myOccurrences);
    const Ref usage =
        myOut.Add("NEXT_ASSEMBLY_USAGE_OCCURRENCE", id, name, "", parent.definition, child.definition, Ref());
    const Ref shape = myOut.Add("PRODUCT_DEFINITION_SHAPE", "", "", usage);
    const Ref transformation = myOut.Add("ITEM_DEFINED_TRANSFORMATION", "", "", child.origin, axis);
    const Ref relation = myOut.Reserve();
    myOut.Begin(relation);
    myOut.Text("(");
    myOut.Record("REPRESENTATION_RELATIONSHIP", "", "", child.representation, parent.representation);
    myOut.Record("REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION", transformation);
    myOut.Text("SHAPE_REPRESENTATION_RELATIONSHIP())");
    myOut.End();
    myOut.Add("CONTEXT_DEPENDENT_SHAPE_REPRESENTATION", relation, shape);
    WriteStepProperties(myOut, occurrence.instance.Properties(), usage, parent.context);
}

} // namespace cadex::step
