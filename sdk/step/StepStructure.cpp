#include "sdk/step/StepStructure.h"

#include <algorithm>
#include <array>

#include <cadex/internal/Reports.hxx>

#include "sdk/text/PlainText.h"

namespace cadex::step {

using text::IsBlankText;
namespace {

constexpr std::array<std::string_view, 2> DefinitionTypes = {"PRODUCT_DEFINITION",
                                                             "PRODUCT_DEFINITION_WITH_ASSOCIATED_DOCUMENTS"};

// Text that a widespread exporter writes into the name of every occurrence.
constexpr std::string_view NoName = "Next assembly relationship";

bool IsGenerated(std::string_view id)
{
    if (id.substr(0, 4) == "NAUO") {
        id.remove_prefix(4);
    }
    return std::all_of(id.begin(), id.end(), [](char c) { return (c >= '0' && c <= '9') || c == ' '; });
}

// Of an occurrence: its name, else its description, else its id unless that is only a number.
std::string_view InstanceName(std::string_view id, std::string_view name, std::string_view description)
{
    if (!IsBlankText(name) && name != NoName) {
        return name;
    }
    if (!IsBlankText(description)) {
        return description;
    }
    return IsGenerated(id) ? std::string_view() : id;
}

} // namespace

bool StepStructure::Build(const ClearText& text)
{
    ReadProducts(text);
    ReadUsages(text);
    ReadRepresentations(text);
    FollowRelations(text);
    ReadPlacements(text);
    FindAssemblies(text);
    return Order();
}

void StepStructure::ReadProducts(const ClearText& text)
{
    for (const std::string_view type : DefinitionTypes) {
        for (const ClearText::Record& record : text.OfType(type)) {
            StepProduct product;
            product.definition = record.id;
            Cursor definition = text.Arguments(record);
            definition.Skip();
            definition.Skip();
            const ClearText::Record* formation = text.Find(definition.Reference());
            if (formation == nullptr) {
                continue;
            }
            Cursor version = text.Arguments(*formation);
            version.Skip();
            version.Skip();
            bool found = false;
            Cursor arguments = text.Arguments(version.Reference(), "PRODUCT", found);
            if (found) {
                const std::string_view id = arguments.String();
                const std::string_view name = arguments.String();
                const std::string_view description = arguments.String();
                product.id = IsBlankText(id) ? Base_UTF16String() : DecodeString(id);
                product.name = IsBlankText(name) ? product.id : DecodeString(name);
                product.description =
                    IsBlankText(description) ? Base_UTF16String() : DecodeString(description);
            }
            myProducts.emplace(record.id, products.size());
            products.push_back(std::move(product));
        }
    }
}

void StepStructure::ReadUsages(const ClearText& text)
{
    for (const ClearText::Record& record : text.OfType("NEXT_ASSEMBLY_USAGE_OCCURRENCE")) {
        Cursor arguments = text.Arguments(record);
        const std::string_view id = arguments.String();
        const std::string_view name = arguments.String();
        const std::string_view description = arguments.String();
        StepInstance instance;
        instance.usage = record.id;
        const RecordId parent = arguments.Reference();
        if (!FindProduct(parent, instance.parent) || !FindProduct(arguments.Reference(), instance.child)) {
            continue;
        }
        instance.name = DecodeString(InstanceName(id, name, description));
        myInstances.emplace(record.id, instances.size());
        products[instance.parent].instances.push_back(instances.size());
        products[instance.child].isUsed = true;
        instances.push_back(std::move(instance));
    }
}

void StepStructure::ReadRepresentations(const ClearText& text)
{
    for (const ClearText::Record& record : text.OfType("SHAPE_DEFINITION_REPRESENTATION")) {
        Cursor arguments = text.Arguments(record);
        const RecordId owner = OwnerOf(text, arguments.Reference());
        const RecordId representation = arguments.Reference();
        std::size_t number = 0;
        if (FindProduct(owner, number)) {
            myRepresentations.emplace(representation, number);
            products[number].representations.push_back(representation);
        } else if (FindInstance(owner, number)) {
            instanceOfRepresentation.emplace(representation, number);
        }
    }
}

// A representation may be related to others that describe the same product (solids beside wireframe, for
// example). Relationships with a transformation place occurrences instead and are complex instances.
void StepStructure::FollowRelations(const ClearText& text)
{
    std::unordered_multimap<RecordId, RecordId> related;
    for (const std::string_view type : {"SHAPE_REPRESENTATION_RELATIONSHIP", "REPRESENTATION_RELATIONSHIP"}) {
        for (const ClearText::Record& record : text.OfType(type)) {
            Cursor arguments = text.Arguments(record);
            arguments.Skip();
            arguments.Skip();
            const RecordId first = arguments.Reference();
            const RecordId second = arguments.Reference();
            related.emplace(first, second);
            related.emplace(second, first);
        }
    }
    for (std::size_t number = 0; !related.empty() && number < products.size(); ++number) {
        std::vector<RecordId>& representations = products[number].representations;
        for (std::size_t i = 0; i < representations.size(); ++i) {
            const auto [first, last] = related.equal_range(representations[i]);
            for (auto relation = first; relation != last; ++relation) {
                if (myRepresentations.emplace(relation->second, number).second) {
                    representations.push_back(relation->second);
                }
            }
        }
    }
}

void StepStructure::ReadPlacements(const ClearText& text)
{
    for (const ClearText::Record& record : text.OfType("CONTEXT_DEPENDENT_SHAPE_REPRESENTATION")) {
        Cursor arguments = text.Arguments(record);
        const RecordId relation = arguments.Reference();
        std::size_t number = 0;
        if (FindInstance(OwnerOf(text, arguments.Reference()), number) && instances[number].relation == 0) {
            instances[number].relation = relation;
        }
    }
}

void StepStructure::FindAssemblies(const ClearText& text)
{
    std::unordered_map<RecordId, bool> assemblies; // by product
    for (const ClearText::Record& record : text.OfType("PRODUCT_RELATED_PRODUCT_CATEGORY")) {
        Cursor arguments = text.Arguments(record);
        if (arguments.String() == "assembly") {
            arguments.Skip();
            const std::vector<RecordId> members = arguments.References();
            for (const RecordId member : members) {
                assemblies.emplace(member, true);
            }
        }
    }
    for (StepProduct& product : products) {
        product.isAssembly = !product.instances.empty();
        if (product.isAssembly || assemblies.empty()) {
            continue;
        }
        const ClearText::Record* definition = text.Find(product.definition);
        Cursor arguments = text.Arguments(*definition);
        arguments.Skip();
        arguments.Skip();
        if (const ClearText::Record* formation = text.Find(arguments.Reference())) {
            Cursor version = text.Arguments(*formation);
            version.Skip();
            version.Skip();
            product.isAssembly = assemblies.count(version.Reference()) != 0;
        }
    }
}

bool Refuse(const char* reason, RecordId record = 0)
{
    internal::Reports::Add(internal::Report::Kind::Refused, reason, record);
    return false;
}

// Depth first without recursion; a product met while its own contents are being visited contains itself.
bool StepStructure::Order()
{
    enum class State : unsigned char
    {
        New,
        Open,
        Done
    };
    std::vector<State> states(products.size(), State::New);
    std::vector<double> occurrences(products.size(), 1.0);
    std::vector<std::size_t> heights(products.size(), 1);
    std::vector<std::pair<std::size_t, std::size_t>> path; // product, next instance
    double total = 0.0;
    const auto visit = [&](std::size_t start) {
        path.emplace_back(start, 0);
        states[start] = State::Open;
        while (!path.empty()) {
            auto& [number, next] = path.back();
            const StepProduct& product = products[number];
            if (next == product.instances.size()) {
                for (const std::size_t instance : product.instances) {
                    occurrences[number] += 1.0 + occurrences[instances[instance].child];
                    heights[number] = std::max(heights[number], 1 + heights[instances[instance].child]);
                }
                if (heights[number] > MaximalDepth) {
                    return Refuse("products are nested too deep", product.definition);
                }
                states[number] = State::Done;
                childrenFirst.push_back(number);
                path.pop_back();
                continue;
            }
            const std::size_t child = instances[product.instances[next++]].child;
            if (states[child] == State::Open) {
                return Refuse("a product contains itself", products[child].definition);
            }
            if (states[child] == State::New) {
                states[child] = State::Open;
                path.emplace_back(child, 0);
            }
        }
        return true;
    };
    for (std::size_t number = 0; number < products.size(); ++number) {
        const StepProduct& product = products[number];
        // Definitions without shape and use are documents, earlier versions and the like.
        const bool hasContent = !product.representations.empty() || !product.instances.empty();
        if (!product.isUsed && (hasContent || products.size() == 1)) {
            roots.push_back(number);
            if (!visit(number)) {
                return false;
            }
            total += occurrences[number];
        }
    }
    // Whatever no root reaches and is used runs in a circle.
    const auto inCircle = std::find_if(products.begin(), products.end(), [&](const StepProduct& product) {
        return product.isUsed && states[static_cast<std::size_t>(&product - products.data())] == State::New;
    });
    if (inCircle != products.end()) {
        return Refuse("a product contains itself", inCircle->definition);
    }
    return total <= MaximalOccurrences || Refuse("products are used too many times");
}

bool StepStructure::FindProduct(RecordId definition, std::size_t& number) const
{
    const auto found = myProducts.find(definition);
    if (found == myProducts.end()) {
        return false;
    }
    number = found->second;
    return true;
}

bool StepStructure::FindInstance(RecordId usage, std::size_t& number) const
{
    const auto found = myInstances.find(usage);
    if (found == myInstances.end()) {
        return false;
    }
    number = found->second;
    return true;
}

bool StepStructure::ProductOfRepresentation(RecordId representation, std::size_t& number) const
{
    const auto found = myRepresentations.find(representation);
    if (found == myRepresentations.end()) {
        return false;
    }
    number = found->second;
    return true;
}

RecordId StepStructure::OwnerOf(const ClearText& text, RecordId propertyDefinition) const
{
    // A property may be that of a shape, of an aspect of a shape, of a shape's aspect's aspect: a few steps
    // at most.
    RecordId id = propertyDefinition;
    for (int step = 0; step < 4; ++step) {
        if (myProducts.count(id) != 0 || myInstances.count(id) != 0) {
            return id;
        }
        const ClearText::Record* record = text.Find(id);
        if (record == nullptr) {
            return 0;
        }
        const std::string_view type = text.TypeName(*record);
        if (type != "PRODUCT_DEFINITION_SHAPE" && type != "PROPERTY_DEFINITION" && type != "SHAPE_ASPECT") {
            return 0;
        }
        Cursor arguments = text.Arguments(*record);
        arguments.Skip();
        arguments.Skip();
        id = arguments.Reference();
    }
    return 0;
}

} // namespace cadex::step
