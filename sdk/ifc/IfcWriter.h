// Writes a model as IFC4: assemblies as IfcElementAssembly, parts as IfcBuildingElementProxy with
// triangulated face sets, shared parts as types with representation maps, polylines, looks and property sets.
//
//     ExportPlan plan;
//     if (plan.Build(model)) { IfcWriter(sink, plan, options).Write(); }
#pragma once

#include <set>

#include "sdk/ifc/IfcShapeWriter.h"
#include "sdk/mesh/ExportPlan.h"

namespace cadex::ifc {

using mesh::ExportOptions;
using mesh::ExportPlan;
using text::ByteSink;

/// Streams one file. IFC does not share assemblies, so each use of one is written out with all that it holds;
/// the geometry of a part that is used more than once is written once. Memory depends on the largest single
/// mesh and the number of occurrences.
class IfcWriter
{
public:
    IfcWriter(ByteSink& sink, const ExportPlan& plan, const ExportOptions& options);

    /// Writes the whole file. False when the sink failed, or the model unfolds to more occurrences than a
    /// file can sensibly hold.
    bool Write();

private:
    /// A part's geometry in the file.
    struct Shape
    {
        std::size_t base = 0; ///< the definition whose geometry this one uses
        double scale = 1;     ///< uniform, on top of the base's own
        ShapeWriter::Items items;
        Ref maps[2];            ///< of faces and of curves, when shared
        Ref type;               ///< IfcBuildingElementProxyType, when shared
        std::vector<Ref> users; ///< occurrences of the type
    };
    /// Where children of an assembly go.
    struct Open
    {
        std::size_t definition;
        std::size_t next = 0;
        Ref element;
        Ref placement;
        GuidKey key;
        std::vector<Ref> children;
    };

    bool CountUses();
    void FindBases();
    void WriteCommon();
    Ref WriteUnits();
    Ref WriteProject(Ref units);
    void WriteShape(std::size_t definition);
    void WriteTree(std::size_t root, Ref parent, Ref placement, const GuidKey& key);
    void WriteOccurrence(const ExportPlan::Occurrence& occurrence, Open& parent, std::vector<Open>& open);
    Ref WritePart(const ExportPlan::Occurrence& occurrence, const Open& parent, const GuidKey& key);
    Ref WriteAssembly(const ExportPlan::Occurrence& occurrence, Ref placement, const GuidKey& key);
    Ref WriteDefinitionShape(Shape& shape);
    Ref AddPlacement(Ref parent, const ExportPlan::Occurrence& occurrence);
    Ref DirectionOf(double x, double y, double z);
    void Relate(Ref element, const PropertySets& properties, const GuidKey& key);
    std::string GuidOf(const PropertySets& properties, const GuidKey& key);

    Part21Writer myOut;
    ShapeWriter myShapeWriter;
    const ExportPlan& myPlan;
    const ExportOptions& myOptions;
    double myUnitsPerMillimetre;
    std::vector<std::size_t> myUses; ///< of each definition in the unfolded tree
    std::vector<Shape> myShapes;     ///< by definition
    std::vector<std::size_t> myRoots;
    std::set<std::string> myGivenGuids;

    Ref myOrigin;
    Ref myAxes;
    Ref myContexts[2]; ///< of bodies and of curves
    Ref myBuilding;
    Ref myBuildingPlacement;
    std::vector<Ref> myContained;
};

} // namespace cadex::ifc
