#include "sdk/ifc/IfcRelations.h"

namespace cadex::ifc {
namespace {

/// Placement and Representation tell a product from everything else: types may be newer than our tables.
bool IsProduct(const Entity& entity)
{
    if (entity.Size() < 7 || entity.Raw(0).size() != 24 || entity.Raw(0).front() != '\'') {
        return false;
    }
    const Type placement = entity.File().TypeOf(entity.RefId(5));
    return placement == Type::IfcLocalPlacement || placement == Type::IfcGridPlacement ||
           entity.File().TypeOf(entity.RefId(6)) == Type::IfcProductDefinitionShape;
}

void AddChildren(Relations& relations, Id parent, const std::vector<Id>& children)
{
    std::vector<Id>& list = relations.children[parent];
    for (Id child : children) {
        if (child != parent) {
            list.push_back(child);
            relations.hasParent.insert(child);
        }
    }
}

} // namespace

Relations::Relations(const IfcFile& file)
{
    file.ForEach([&](const IfcFile::Record& record) {
        switch (file.TypeOf(record)) {
        case Type::Other:
        case Type::IfcSpace:
        case Type::IfcAnnotation:
        case Type::IfcGrid:
        case Type::IfcVirtualElement:
            AddObject(file, record);
            break;
        case Type::IfcProject:
            projects.push_back(record.id);
            break;
        case Type::IfcRelAggregates:
        case Type::IfcRelNests:
        case Type::IfcRelContainedInSpatialStructure:
        case Type::IfcRelVoidsElement:
        case Type::IfcRelDefinesByProperties:
        case Type::IfcRelDefinesByType:
        case Type::IfcRelAssociatesMaterial:
        case Type::IfcStyledItem:
        case Type::IfcAnnotationCurveOccurrence:
        case Type::IfcAnnotationFillAreaOccurrence:
        case Type::IfcAnnotationSurfaceOccurrence:
        case Type::IfcIndexedColourMap:
        case Type::IfcMaterialDefinitionRepresentation:
            Add(file.At(record));
            break;
        default:
            break;
        }
    });
}

void Relations::AddObject(const IfcFile& file, const IfcFile::Record& record)
{
    const Entity entity = file.At(record);
    if (IsProduct(entity)) {
        objects.push_back(record.id);
    }
    // Type objects: HasPropertySets, RepresentationMaps
    else if (entity.Size() >= 8 && !entity.Raw(6).empty() && entity.Raw(6).front() == '(' &&
             entity.Raw(0).size() == 24) {
        for (Id map : entity.Refs(6)) {
            typeOfMap.emplace(map, record.id);
        }
    }
}

void Relations::Add(const Entity& relation)
{
    switch (relation.Type()) {
    case Type::IfcRelAggregates:
    case Type::IfcRelNests:
        AddChildren(*this, relation.RefId(4), relation.Refs(5));
        break;
    case Type::IfcRelContainedInSpatialStructure:
        AddChildren(*this, relation.RefId(5), relation.Refs(4));
        break;
    case Type::IfcRelVoidsElement:
        openings[relation.RefId(4)].push_back(relation.RefId(5));
        hasParent.insert(relation.RefId(5));
        break;
    case Type::IfcRelDefinesByProperties:
        for (Id object : relation.Refs(4)) {
            for (Id set : relation.Refs(5)) // one, or in IFC4 a set of them
            {
                propertySets[object].push_back(set);
            }
        }
        break;
    case Type::IfcRelDefinesByType:
        for (Id object : relation.Refs(4)) {
            typeOf.emplace(object, relation.RefId(5));
        }
        break;
    case Type::IfcRelAssociatesMaterial:
        for (Id object : relation.Refs(4)) {
            materialOf.emplace(object, relation.RefId(5));
        }
        break;
    case Type::IfcStyledItem:
    case Type::IfcAnnotationCurveOccurrence:
    case Type::IfcAnnotationFillAreaOccurrence:
    case Type::IfcAnnotationSurfaceOccurrence:
        styleOf.emplace(relation.RefId(0), relation.Id());
        break;
    case Type::IfcIndexedColourMap:
        coloursOf.emplace(relation.RefId(0), relation.Id());
        break;
    default: // IfcMaterialDefinitionRepresentation: Name, Description, Representations, RepresentedMaterial
        for (Id representation : relation.Refs(2)) {
            materialStyles[relation.RefId(3)].push_back(representation);
        }
        break;
    }
}

const std::vector<Id>& Relations::List(const IdLists& lists, Id id) const
{
    static const std::vector<Id> none;
    const auto found = lists.find(id);
    return found == lists.end() ? none : found->second;
}

Id Relations::Find(const IdMap& map, Id id)
{
    const auto found = map.find(id);
    return found == map.end() ? 0 : found->second;
}

} // namespace cadex::ifc
