#include "sdk/ifc/IfcWriter.h"

#include <cmath>
#include <unordered_map>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/internal/Progress.hxx>

#include "sdk/text/LengthUnits.h"

namespace cadex::ifc {

using mesh::Identity3;
using mesh::SameResidual;
using mesh::Vector3;
using part21::Part21Header;
using part21::Part21TimeStamp;
using part21::Raw;
using part21::TypedReal;
using part21::Xyz;
using text::LengthUnitOf;
using text::LengthUnitText;
namespace {

constexpr std::size_t MostOccurrences = 20'000'000;
constexpr Raw None{"$"};

/// right == factor * left, for a factor above zero.
bool UniformFactor(const Matrix3& left, const Matrix3& right, double& factor)
{
    double products = 0;
    double squares = 0;
    for (std::size_t i = 0; i < 9; ++i) {
        products += left[i] * right[i];
        squares += left[i] * left[i];
    }
    factor = squares > 0 ? products / squares : 0;
    Matrix3 scaled = left;
    for (double& value : scaled) {
        value *= factor;
    }
    return factor > 0 && std::isfinite(factor) && SameResidual(scaled, right);
}

Base_UTF16String NameOf(const ExportPlan::Occurrence& occurrence, const ExportPlan::Definition& definition)
{
    const Base_UTF16String name = occurrence.instance.Name();
    return name.IsEmpty() ? definition.element.Name() : name;
}

} // namespace

IfcWriter::IfcWriter(ByteSink& sink, const ExportPlan& plan, const ExportOptions& options)
    : myOut(sink),
      myShapeWriter(myOut),
      myPlan(plan),
      myOptions(options),
      myUnitsPerMillimetre(1 / LengthUnitOf(options.unit).millimetres),
      myUses(plan.definitions.size(), 0),
      myShapes(plan.definitions.size())
{
}

bool IfcWriter::Write()
{
    if (!CountUses()) {
        return false;
    }
    FindBases();
    Part21Header header;
    header.description = "ViewDefinition [ReferenceView_V1.2]";
    header.fileName = myOptions.fileName;
    header.timeStamp = Part21TimeStamp();
    header.author = myOptions.author;
    header.organization = myOptions.organization;
    header.preprocessor = "cadex open engine";
    header.originatingSystem = myOptions.originatingSystem;
    header.schema = "IFC4";
    myOut.BeginFile(header);
    WriteCommon();
    const GuidKey key = GuidKey().Child("building", 0);
    for (std::size_t i = 0; i < myRoots.size() && myOut.Ok(); ++i) {
        WriteTree(myRoots[i], myBuilding, myBuildingPlacement, key.Child("root", i));
    }
    if (!myContained.empty()) {
        myOut.Add("IFCRELCONTAINEDINSPATIALSTRUCTURE", key.Child("contained", 0).Text(), None, None, None,
                  myContained, myBuilding);
    }
    for (std::size_t i = 0; i < myShapes.size(); ++i) {
        if (!myShapes[i].users.empty()) {
            myOut.Add("IFCRELDEFINESBYTYPE", GuidKey().Child("typed", i).Text(), None, None, None,
                      myShapes[i].users, myShapes[i].type);
        }
    }
    return myOut.EndFile();
}

/// How often each definition stands in the unfolded tree; false when the tree is too large.
bool IfcWriter::CountUses()
{
    std::vector<bool> isChild(myPlan.definitions.size(), false);
    for (const ExportPlan::Definition& definition : myPlan.definitions) {
        for (const ExportPlan::Occurrence& occurrence : definition.occurrences) {
            isChild[occurrence.definition] = true;
        }
    }
    std::size_t total = 0;
    // parents before children: the order of writing, backwards
    std::vector<std::size_t> parentsFirst(myPlan.order.rbegin(), myPlan.order.rend());
    for (const std::size_t index : parentsFirst) {
        if (!isChild[index]) {
            myUses[index] = 1;
        }
        total += myUses[index];
        if (total > MostOccurrences) {
            return false;
        }
        for (const ExportPlan::Occurrence& occurrence : myPlan.definitions[index].occurrences) {
            myUses[occurrence.definition] += myUses[index];
        }
    }
    for (std::size_t i = 0; i < isChild.size(); ++i) {
        if (!isChild[i]) {
            myRoots.push_back(i);
        }
    }
    return true;
}

/// Parts that differ by a uniform factor alone share the first one's geometry: mapped items may be scaled.
void IfcWriter::FindBases()
{
    std::unordered_map<const void*, std::vector<std::size_t>> bases;
    for (std::size_t i = 0; i < myPlan.definitions.size(); ++i) {
        const ExportPlan::Definition& definition = myPlan.definitions[i];
        myShapes[i].base = i;
        std::vector<std::size_t>& variants = bases[definition.element.Impl()];
        for (const std::size_t variant : variants) {
            double factor = 1;
            if (UniformFactor(myPlan.definitions[variant].residual, definition.residual, factor)) {
                myShapes[i].base = variant;
                myShapes[i].scale = factor;
                myUses[variant] += myUses[i];
                break;
            }
        }
        if (myShapes[i].base == i) {
            variants.push_back(i);
        }
    }
}

void IfcWriter::WriteCommon()
{
    myOrigin = myOut.Add("IFCCARTESIANPOINT", Xyz{});
    myAxes = myOut.Add("IFCAXIS2PLACEMENT3D", myOrigin, None, None);
    const Ref model = myOut.Add("IFCGEOMETRICREPRESENTATIONCONTEXT", None, "Model", 3,
                                1e-5 * myUnitsPerMillimetre, myAxes, None);
    const auto subContext = [&](const char* name) {
        return myOut.Add("IFCGEOMETRICREPRESENTATIONSUBCONTEXT", name, "Model", Raw{"*"}, Raw{"*"}, Raw{"*"},
                         Raw{"*"}, model, None, Raw{".MODEL_VIEW."}, None);
    };
    myContexts[0] = subContext("Body");
    myContexts[1] = subContext("Annotation");
    const Ref units = WriteUnits();

    // One assembly at the top is the project and its building; several stand in the building side by side.
    const bool single =
        myRoots.size() == 1 && !myPlan.definitions[myRoots.front()].element.IsOfType<ModelData_Part>();
    const ModelData_SceneGraphElement& root =
        single ? myPlan.definitions[myRoots.front()].element : ModelData_SceneGraphElement();
    const Base_UTF16String name = root.IsNull() ? myPlan.modelName : root.Name();
    const GuidKey key;
    const Ref project = myOut.Add("IFCPROJECT", key.Child("project", 0).Text(), None, name, None, None, None,
                                  None, std::array{model}, units);
    myBuildingPlacement = myOut.Add("IFCLOCALPLACEMENT", None, myAxes);
    const ModelData_PropertyTable properties = root.IsNull() ? ModelData_PropertyTable() : root.Properties();
    const GuidKey buildingKey = key.Child("building", 0);
    const PropertySets sets = WritePropertySets(myOut, properties, ModelData_PropertyTable(), buildingKey);
    myBuilding = myOut.Add("IFCBUILDING", GuidOf(sets, buildingKey), None, name, None, None,
                           myBuildingPlacement, None, None, Raw{".ELEMENT."}, None, None, None);
    Relate(myBuilding, sets, buildingKey);
    myOut.Add("IFCRELAGGREGATES", key.Child("aggregated", 0).Text(), None, None, None, project,
              std::array{myBuilding});

    const std::size_t count = myPlan.definitions.size();
    for (std::size_t i = 0; i < count && myOut.Ok() && internal::Progress::GoesOn(i, count); ++i) {
        if (myPlan.definitions[i].element.IsOfType<ModelData_Part>() && myShapes[i].base == i) {
            WriteShape(i);
        }
    }
}

Ref IfcWriter::WriteUnits()
{
    const LengthUnitText& entry = LengthUnitOf(myOptions.unit);
    const std::string_view prefix = entry.prefix.empty() ? std::string_view(".MILLI.") : entry.prefix;
    Ref length = myOut.Add("IFCSIUNIT", Raw{"*"}, Raw{".LENGTHUNIT."}, Raw{prefix}, Raw{".METRE."});
    if (entry.prefix.empty()) {
        const Ref exponents = myOut.Add("IFCDIMENSIONALEXPONENTS", 1, 0, 0, 0, 0, 0, 0);
        const Ref measure =
            myOut.Add("IFCMEASUREWITHUNIT", TypedReal{"IFCLENGTHMEASURE", entry.millimetres}, length);
        length = myOut.Add("IFCCONVERSIONBASEDUNIT", exponents, Raw{".LENGTHUNIT."}, entry.name, measure);
    }
    const auto plain = [&](std::string_view kind, std::string_view name) {
        return myOut.Add("IFCSIUNIT", Raw{"*"}, Raw{kind}, None, Raw{name});
    };
    return myOut.Add("IFCUNITASSIGNMENT", std::array{length, plain(".AREAUNIT.", ".SQUARE_METRE."),
                                                     plain(".VOLUMEUNIT.", ".CUBIC_METRE."),
                                                     plain(".PLANEANGLEUNIT.", ".RADIAN.")});
}

void IfcWriter::WriteShape(std::size_t index)
{
    const ExportPlan::Definition& definition = myPlan.definitions[index];
    const auto& part = static_cast<const ModelData_Part&>(definition.element);
    Shape& shape = myShapes[index];
    Matrix3 linear = definition.residual;
    for (double& value : linear) {
        value *= myUnitsPerMillimetre;
    }
    shape.items = myShapeWriter.Write(part, linear);
    if (myUses[index] < 2) {
        return;
    }
    std::vector<Ref> maps;
    const std::vector<Ref>* items[2] = {&shape.items.faces, &shape.items.curves};
    for (std::size_t i = 0; i < 2; ++i) {
        if (!items[i]->empty()) {
            const Ref representation =
                myOut.Add("IFCSHAPEREPRESENTATION", myContexts[i], i == 0 ? "Body" : "Annotation",
                          i == 0 ? "Tessellation" : "GeometricCurveSet", *items[i]);
            shape.maps[i] = myOut.Add("IFCREPRESENTATIONMAP", myAxes, representation);
            maps.push_back(shape.maps[i]);
        }
    }
    const GuidKey key = GuidKey().Child("type", index);
    const PropertySets properties =
        WritePropertySets(myOut, part.Properties(), ModelData_PropertyTable(), key);
    shape.type = myOut.Reserve();
    myOut.Begin(shape.type);
    myOut.Text("IFCBUILDINGELEMENTPROXYTYPE(");
    myOut.Put(GuidOf(properties, key));
    myOut.Text(",$,");
    myOut.Put(part.Name());
    myOut.Text(",$,$,");
    properties.sets.empty() ? myOut.Put(None) : myOut.Put(properties.sets);
    myOut.Text(",");
    maps.empty() ? myOut.Put(None) : myOut.Put(maps);
    myOut.Text(",$,$,.NOTDEFINED.)");
    myOut.End();
}

/// Walks the unfolded tree below a root with a stack of its own.
void IfcWriter::WriteTree(std::size_t root, Ref parent, Ref placement, const GuidKey& key)
{
    const ExportPlan::Definition& definition = myPlan.definitions[root];
    std::vector<Open> open;
    const bool single = myRoots.size() == 1;
    if (single && !definition.element.IsOfType<ModelData_Part>()) {
        open.push_back({root, 0, parent, placement, key, {}});
    } else {
        ExportPlan::Occurrence occurrence;
        occurrence.instance = ModelData_Instance(definition.element);
        occurrence.definition = root;
        Open building{root, 0, parent, placement, key, {}};
        WriteOccurrence(occurrence, building, open);
        myContained.insert(myContained.end(), building.children.begin(), building.children.end());
    }
    while (!open.empty() && myOut.Ok()) {
        Open& top = open.back();
        const std::vector<ExportPlan::Occurrence>& occurrences =
            myPlan.definitions[top.definition].occurrences;
        if (top.next < occurrences.size()) {
            const ExportPlan::Occurrence& occurrence = occurrences[top.next++];
            WriteOccurrence(occurrence, top, open); // may move `top`
            continue;
        }
        if (top.element.id == myBuilding.id) {
            myContained.insert(myContained.end(), top.children.begin(), top.children.end());
        } else if (!top.children.empty()) {
            myOut.Add("IFCRELAGGREGATES", top.key.Child("aggregated", 0).Text(), None, None, None,
                      top.element, top.children);
        }
        open.pop_back();
    }
}

void IfcWriter::WriteOccurrence(const ExportPlan::Occurrence& occurrence, Open& parent,
                                std::vector<Open>& open)
{
    const GuidKey key = parent.key.Child("child", parent.next);
    if (myPlan.definitions[occurrence.definition].element.IsOfType<ModelData_Part>()) {
        parent.children.push_back(WritePart(occurrence, parent, key));
        return;
    }
    const Ref placement = AddPlacement(parent.placement, occurrence);
    const Ref element = WriteAssembly(occurrence, placement, key);
    parent.children.push_back(element);
    open.push_back({occurrence.definition, 0, element, placement, key, {}});
}

Ref IfcWriter::WriteAssembly(const ExportPlan::Occurrence& occurrence, Ref placement, const GuidKey& key)
{
    const ExportPlan::Definition& definition = myPlan.definitions[occurrence.definition];
    const PropertySets properties =
        WritePropertySets(myOut, definition.element.Properties(), occurrence.instance.Properties(), key);
    const Ref element =
        myOut.Add("IFCELEMENTASSEMBLY", GuidOf(properties, key), None, NameOf(occurrence, definition), None,
                  None, placement, None, None, Raw{".NOTDEFINED."}, Raw{".NOTDEFINED."});
    Relate(element, properties, key);
    return element;
}

Ref IfcWriter::WritePart(const ExportPlan::Occurrence& occurrence, const Open& parent, const GuidKey& key)
{
    const ExportPlan::Definition& definition = myPlan.definitions[occurrence.definition];
    Shape& own = myShapes[occurrence.definition];
    Shape& base = myShapes[own.base];
    const bool shared = static_cast<bool>(base.type);
    // a shared part's properties stand with its type
    const PropertySets properties =
        WritePropertySets(myOut, shared ? ModelData_PropertyTable() : definition.element.Properties(),
                          occurrence.instance.Properties(), key);
    const Ref placement = AddPlacement(parent.placement, occurrence);
    const Ref shape = WriteDefinitionShape(own);
    const Ref element =
        myOut.Add("IFCBUILDINGELEMENTPROXY", GuidOf(properties, key), None, NameOf(occurrence, definition),
                  None, None, placement, shape, None, Raw{".NOTDEFINED."});
    if (shared) {
        base.users.push_back(element);
    }
    Relate(element, properties, key);
    return element;
}

Ref IfcWriter::WriteDefinitionShape(Shape& shape)
{
    const Shape& base = myShapes[shape.base];
    std::vector<Ref> representations;
    const std::vector<Ref>* items[2] = {&base.items.faces, &base.items.curves};
    for (std::size_t i = 0; i < 2; ++i) {
        const char* identifier = i == 0 ? "Body" : "Annotation";
        if (base.maps[i]) {
            const Ref target =
                myOut.Add("IFCCARTESIANTRANSFORMATIONOPERATOR3D", None, None, myOrigin, shape.scale, None);
            const Ref item = myOut.Add("IFCMAPPEDITEM", base.maps[i], target);
            representations.push_back(myOut.Add("IFCSHAPEREPRESENTATION", myContexts[i], identifier,
                                                "MappedRepresentation", std::array{item}));
        } else if (!items[i]->empty()) {
            representations.push_back(myOut.Add("IFCSHAPEREPRESENTATION", myContexts[i], identifier,
                                                i == 0 ? "Tessellation" : "GeometricCurveSet", *items[i]));
        }
    }
    return representations.empty() ? Ref()
                                   : myOut.Add("IFCPRODUCTDEFINITIONSHAPE", None, None, representations);
}

Ref IfcWriter::AddPlacement(Ref parent, const ExportPlan::Occurrence& occurrence)
{
    const Vector3& t = occurrence.translation;
    const Matrix3& r = occurrence.rotation;
    Ref axes = myAxes;
    if (t != Vector3{} || r != Identity3) {
        const Ref point =
            myOut.Add("IFCCARTESIANPOINT", Xyz{t[0] * myUnitsPerMillimetre, t[1] * myUnitsPerMillimetre,
                                               t[2] * myUnitsPerMillimetre});
        const bool turned = r != Identity3;
        axes = myOut.Add("IFCAXIS2PLACEMENT3D", point, turned ? DirectionOf(r[2], r[5], r[8]) : Ref(),
                         turned ? DirectionOf(r[0], r[3], r[6]) : Ref());
    }
    return myOut.Add("IFCLOCALPLACEMENT", parent, axes);
}

Ref IfcWriter::DirectionOf(double x, double y, double z)
{
    return myOut.Add("IFCDIRECTION", Xyz{x, y, z});
}

void IfcWriter::Relate(Ref element, const PropertySets& properties, const GuidKey& key)
{
    for (std::size_t i = 0; i < properties.sets.size(); ++i) {
        myOut.Add("IFCRELDEFINESBYPROPERTIES", key.Child("defined", i).Text(), None, None, None,
                  std::array{element}, properties.sets[i]);
    }
}

/// The id that the object brought with it, unless another one has it already; else one of its own.
std::string IfcWriter::GuidOf(const PropertySets& properties, const GuidKey& key)
{
    if (!properties.globalId.empty() && myGivenGuids.insert(properties.globalId).second) {
        return properties.globalId;
    }
    return key.Text();
}

} // namespace cadex::ifc
