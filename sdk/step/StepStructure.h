// The product structure of a STEP file: which products there are, where each is used, and what each is
// called.
//
//     StepStructure structure;
//     if (structure.Build(text)) {
//         for (std::size_t root : structure.roots) { ... structure.products[root].instances ... }
//     }
//
// NOTE: ISO 10303-41 and 10303-44: a product definition is one version and view of a product; a usage
// occurrence places one in another; a shape definition representation gives it geometry.
#pragma once

#include <cstddef>
#include <unordered_map>
#include <vector>

#include <cadex/Base_UTF16String.hxx>

#include "sdk/step/StepText.h"

namespace cadex::step {

/// One product definition.
struct StepProduct
{
    RecordId definition = 0;
    Base_UTF16String name; ///< of the product, else its id; empty when both are blank
    Base_UTF16String id;
    Base_UTF16String description;
    std::vector<RecordId> representations; ///< shape representations, also those related to the main one
    std::vector<std::size_t> instances;    ///< what the product is assembled from, in the order of the file
    bool isUsed = false;                   ///< placed in another product: no root
    bool isAssembly = false;               ///< has instances, or is empty and its category says so
};

/// One use of a product in another.
struct StepInstance
{
    RecordId usage = 0;
    std::size_t parent = 0; ///< numbers of products
    std::size_t child = 0;
    Base_UTF16String name; ///< empty when the file gives none, or only a number
    RecordId relation = 0; ///< the representation relationship that places it; 0 when there is none
};

class StepStructure
{
public:
    /// Depth and size that the import goes along with. Beyond, the file is refused: a host that expands
    /// shared assemblies into nodes of its own could not hold it.
    static constexpr std::size_t MaximalDepth = 1000;
    static constexpr double MaximalOccurrences = 4e6;

    /// False, with the reason reported, when a product contains itself or the structure goes beyond the
    /// limits.
    bool Build(const ClearText& text);

    /// Number of the product or instance of a product definition or usage; false when it is none.
    bool FindProduct(RecordId definition, std::size_t& number) const;
    bool FindInstance(RecordId usage, std::size_t& number) const;
    /// What a product definition shape (or another property definition) belongs to: the id of a product
    /// definition or of a usage, or 0. Shape aspects lead to the product that they are an aspect of.
    RecordId OwnerOf(const ClearText& text, RecordId propertyDefinition) const;
    /// The product that a shape representation belongs to.
    bool ProductOfRepresentation(RecordId representation, std::size_t& number) const;

    std::vector<StepProduct> products;
    std::vector<StepInstance> instances;
    std::vector<std::size_t> roots;
    std::vector<std::size_t> childrenFirst; ///< all products that a root needs, each after what it is made of
    /// By the number of a usage: the shape representations that stand for the occurrence alone.
    std::unordered_map<RecordId, std::size_t> instanceOfRepresentation;

private:
    void ReadProducts(const ClearText& text);
    void ReadUsages(const ClearText& text);
    void ReadRepresentations(const ClearText& text);
    void FollowRelations(const ClearText& text);
    void ReadPlacements(const ClearText& text);
    void FindAssemblies(const ClearText& text);
    bool Order();

    std::unordered_map<RecordId, std::size_t> myProducts;
    std::unordered_map<RecordId, std::size_t> myInstances;
    std::unordered_map<RecordId, std::size_t> myRepresentations;
};

} // namespace cadex::step
