// Writes a model as STEP (AP214, automotive_design): product structure with shared parts, meshes as faceted
// bodies and shells, polylines, colours with transparency, and properties as user-defined attributes.
//
//     ExportPlan plan;
//     if (plan.Build(model)) { StepWriter(sink, plan, options).Write(); }
#pragma once

#include <vector>

#include "sdk/mesh/ExportPlan.h"
#include "sdk/part21/Part21Writer.h"
#include "sdk/step/StepStyleWriter.h"

namespace cadex::step {

using mesh::ExportOptions;
using mesh::ExportPlan;
using mesh::Matrix3;
using mesh::Vector3;
using text::ByteSink;

/// Streams one file; memory depends on the largest single mesh and the number of definitions, not on the
/// file.
class StepWriter
{
public:
    StepWriter(ByteSink& sink, const ExportPlan& plan, const ExportOptions& options);

    /// Writes the whole file. False when the sink failed.
    bool Write();

private:
    /// The entities of a definition that others refer to.
    struct Product
    {
        Ref definition;     ///< PRODUCT_DEFINITION
        Ref representation; ///< its shape
        Ref origin;         ///< the axis placement at its origin
        Ref context;
    };

    void WriteCommon();
    Ref WriteLengthUnit();
    Ref AddContext();
    Ref AddAxis(const Matrix3& rotation, const Vector3& position);
    Ref DirectionOf(double x, double y, double z);
    void WriteDefinition(std::size_t index);
    void BeginProduct(Product& product, const Base_UTF16String& name);
    void WritePart(const ExportPlan::Definition& definition, Product& product);
    void WriteAssembly(const ExportPlan::Definition& definition, Product& product);
    void WriteOccurrence(const ExportPlan::Occurrence& occurrence, const Product& parent, Ref axis);

    Part21Writer myOut;
    StepStyleWriter myStyles;
    const ExportPlan& myPlan;
    const ExportOptions& myOptions;
    double myUnitsPerMillimetre;
    std::vector<Product> myProducts; // by definition
    std::size_t myOccurrences = 0;

    Ref myProductContext;
    Ref myDefinitionContext;
    Ref myUnits[3]; // length, plane angle, solid angle
    Ref myUncertainty;
    Ref myZero;
    Ref myAxes[6]; // +x, +y, +z, -x, -y, -z
};

} // namespace cadex::step
