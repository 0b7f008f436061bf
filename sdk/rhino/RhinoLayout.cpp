#include "sdk/rhino/RhinoLayout.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <string>

#include <cadex/ModelData_Instance.hxx>

#include "sdk/mesh/PolyLines.h"
#include "sdk/model/Elements.h"
#include "sdk/rhino/RhinoTables.h"
#include "sdk/rhino/RhinoTolerances.h"
#include "sdk/text/Mixing.h"

namespace cadex::rhino {

using text::Mixed;

namespace {

bool IsIdentity(const mesh::Matrix3& matrix)
{
    for (std::size_t i = 0; i < 9; ++i) {
        if (std::abs(matrix[i] - mesh::Identity3[i]) > tolerance::SameMatrix) {
            return false;
        }
    }
    return true;
}

/// False when the matrix cannot be inverted with some precision.
bool Invert(const mesh::Matrix3& matrix, mesh::Matrix3& inverse)
{
    const double determinant = mesh::Determinant(matrix);
    double largest = 0;
    for (const double value : matrix) {
        largest = std::max(largest, std::abs(value));
    }
    if (!(std::abs(determinant) > tolerance::SmallestDeterminant * largest * largest * largest)) {
        return false;
    }
    inverse = mesh::Inverse(matrix);
    return true;
}

std::size_t CountSets(const ModelData_SceneGraphElement& part)
{
    std::size_t count = 0;
    const ModelData_PolyShapeList& sets = SetsOf(part);
    for (std::size_t i = 0; i < sets.Size(); ++i) {
        if (sets[i].IsOfType<ModelData_IndexedTriangleSet>()) {
            ++count;
        } else if (sets[i].IsOfType<ModelData_PolyLineSet>()) {
            count += mesh::ChainsOf(*static_cast<internal::PolyLineSetImpl*>(sets[i].Impl())).size();
        }
    }
    return count;
}

} // namespace

bool IsMaterial(const ModelData_Appearance& appearance)
{
    ModelData_Material material;
    return !appearance.IsNull() && appearance.ToMaterial(material);
}

const ModelData_PolyShapeList& SetsOf(const ModelData_SceneGraphElement& part)
{
    return static_cast<const ModelData_Part&>(part).PolyRepresentation(ModelData_RM_Poly).Get();
}

RhinoLayout::RhinoLayout(const mesh::ExportPlan& plan)
    : blocks(plan.definitions.size()), myPlan(plan), mySeed(Mixed(plan.definitions.size(), plan.modelName))
{
    for (const mesh::ExportPlan::Definition& definition : plan.definitions) {
        mySeed = Mixed(mySeed, definition.element.Name());
    }
    FindBases();
    FindRoots();
    NameBlocks();
    CollectAppearances();
}

/// Variants of one part share the block of the first one whose matrix can be inverted.
void RhinoLayout::FindBases()
{
    std::unordered_map<const void*, std::size_t> bases;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const mesh::ExportPlan::Definition& definition = myPlan.definitions[i];
        blocks[i].base = i;
        mesh::Matrix3 inverse{};
        if (!definition.element.IsOfType<ModelData_Part>()) {
            continue;
        }
        const auto base = bases.find(definition.element.Impl());
        if (base != bases.end()) {
            Invert(myPlan.definitions[base->second].residual, inverse);
            blocks[i].base = base->second;
            blocks[i].extra = mesh::Multiply(definition.residual, inverse);
        } else if (Invert(definition.residual, inverse)) {
            bases.emplace(definition.element.Impl(), i);
        }
    }
    for (const mesh::ExportPlan::Definition& definition : myPlan.definitions) {
        for (const mesh::ExportPlan::Occurrence& occurrence : definition.occurrences) {
            ++blocks[blocks[occurrence.definition].base].uses;
        }
    }
}

/// Roots are what nothing else holds.
void RhinoLayout::FindRoots()
{
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        if (blocks[i].base == i && blocks[i].uses == 0) {
            blocks[i].layer = static_cast<std::int32_t>(roots.size());
            roots.push_back(i);
        }
    }
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const mesh::ExportPlan::Definition& definition = myPlan.definitions[i];
        for (const mesh::ExportPlan::Occurrence& occurrence : definition.occurrences) {
            if (!IsPlain(occurrence, definition, blocks[i].layer >= 0)) {
                blocks[blocks[occurrence.definition].base].isWritten = true;
            }
        }
        blocks[i].objects = definition.element.IsOfType<ModelData_Part>() ? CountSets(definition.element)
                                                                          : definition.occurrences.size();
    }
}

/// Readers give blocks of the same name, or without one, names of their own.
void RhinoLayout::NameBlocks()
{
    std::unordered_map<std::string, std::size_t> used;
    for (const std::size_t index : myPlan.order) {
        if (!blocks[index].isWritten) {
            continue;
        }
        Base_UTF16String name = myPlan.definitions[index].element.Name();
        if (name.IsEmpty()) {
            name = "Block";
        }
        std::string key = name.ToUTF8();
        std::transform(key.begin(), key.end(), key.begin(),
                       [](unsigned char c) { return static_cast<char>(c < 0x80 ? std::tolower(c) : c); });
        const std::size_t number = ++used[key];
        blocks[index].name = NumberedName(name, number);
    }
}

/// Members of a block that is read back as an assembly have names of their own and are not alone.
bool RhinoLayout::IsPlain(const mesh::ExportPlan::Occurrence& occurrence,
                          const mesh::ExportPlan::Definition& parent, bool parentIsRoot) const
{
    const ModelData_SceneGraphElement& element = myPlan.definitions[occurrence.definition].element;
    const Block& block = blocks[occurrence.definition];
    const Base_UTF16String name = element.Name();
    return element.IsOfType<ModelData_Part>() && block.base == occurrence.definition && block.uses == 1 &&
           IsIdentity(occurrence.rotation) && occurrence.translation == mesh::Vector3{} &&
           occurrence.instance.Properties().IsEmpty() && occurrence.instance.Appearance().IsNull() &&
           occurrence.instance.Name() == name && CountSets(element) == 1 &&
           (parentIsRoot ||
            (parent.occurrences.size() > 1 && !name.IsEmpty() && !(name == parent.element.Name())));
}

void RhinoLayout::CollectAppearances()
{
    for (const mesh::ExportPlan::Definition& definition : myPlan.definitions) {
        if (definition.element.IsOfType<ModelData_Part>()) {
            Collect(definition.element.Appearance());
            const ModelData_PolyShapeList& sets = SetsOf(definition.element);
            for (std::size_t i = 0; i < sets.Size(); ++i) {
                Collect(sets[i].Appearance());
            }
        }
        for (const mesh::ExportPlan::Occurrence& occurrence : definition.occurrences) {
            Collect(occurrence.instance.Appearance());
        }
    }
}

void RhinoLayout::Collect(const ModelData_Appearance& appearance)
{
    if (IsMaterial(appearance) &&
        materialOf.emplace(appearance, static_cast<std::int32_t>(materials.size())).second) {
        materials.push_back(appearance);
    }
}

Uuid RhinoLayout::IdOf(char kind, std::size_t number, std::size_t item) const
{
    const std::uint64_t place = Mixed(Mixed(static_cast<std::uint64_t>(kind) + mySeed) + number);
    const std::uint64_t bits[2] = {Mixed(place + item), Mixed(place ^ Mixed(item + 1))};
    Uuid id;
    std::memcpy(id.bytes.data(), bits, sizeof(bits));
    id.bytes[7] = static_cast<std::uint8_t>((id.bytes[7] & 0x0F) | 0x40); // as if chosen at random
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);
    return id;
}

} // namespace cadex::rhino
