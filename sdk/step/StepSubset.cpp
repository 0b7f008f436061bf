#include "sdk/step/StepSubset.h"

#include <algorithm>
#include <vector>

namespace cadex::step {

namespace {

// Left out when nothing that stays refers to them: placements are made of these.
constexpr std::string_view Loose[] = {"AXIS2_PLACEMENT_3D", "CARTESIAN_POINT", "DIRECTION"};

class Subset
{
public:
    Subset(const ClearText& text, const StepStructure& structure)
        : myText(text), myStructure(structure), myStays(text.Records().size(), true)
    {
    }

    std::string Make()
    {
        DropInstances();
        DropAssemblies();
        DropLoose();
        return Print();
    }

private:
    std::size_t PlaceOf(const ClearText::Record& record) const
    {
        return static_cast<std::size_t>(&record - myText.Records().data());
    }

    void Drop(RecordId id)
    {
        if (const ClearText::Record* record = myText.Find(id)) {
            myStays[PlaceOf(*record)] = false;
        }
    }

    bool IsDropped(RecordId id) const
    {
        const ClearText::Record* record = myText.Find(id);
        return record != nullptr && !myStays[PlaceOf(*record)];
    }

    // Drops the records of a type of which one of the arguments `first` to `last` is left out.
    void DropUsersOf(std::string_view type, int first, int last)
    {
        for (const ClearText::Record& record : myText.OfType(type)) {
            Cursor arguments = myText.Arguments(record);
            for (int i = 0; i < first; ++i) {
                arguments.Skip();
            }
            for (int i = first; i <= last; ++i) {
                if (IsDropped(arguments.Reference())) {
                    myStays[PlaceOf(record)] = false;
                }
            }
        }
    }

    void DropInstances()
    {
        for (const std::string_view type : {"NEXT_ASSEMBLY_USAGE_OCCURRENCE", "ITEM_DEFINED_TRANSFORMATION",
                                            "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION"}) {
            for (const ClearText::Record& record : myText.OfType(type)) {
                myStays[PlaceOf(record)] = false;
            }
        }
        for (const StepInstance& instance : myStructure.instances) {
            Drop(instance.relation);
        }
        DropUsersOf("PRODUCT_DEFINITION_SHAPE", 2, 2);
    }

    void DropAssemblies()
    {
        for (const StepProduct& product : myStructure.products) {
            for (std::size_t i = 0; !product.instances.empty() && i < product.representations.size(); ++i) {
                Drop(product.representations[i]);
            }
        }
        DropUsersOf("SHAPE_DEFINITION_REPRESENTATION", 1, 1);
        DropUsersOf("SHAPE_REPRESENTATION_RELATIONSHIP", 2, 3);
        DropUsersOf("REPRESENTATION_RELATIONSHIP", 2, 3);
    }

    void DropLoose()
    {
        std::vector<const ClearText::Record*> open;
        for (const ClearText::Record& record : myText.Records()) {
            if (myStays[PlaceOf(record)]) {
                open.push_back(&record);
            }
        }
        for (const std::string_view type : Loose) {
            for (const ClearText::Record& record : myText.OfType(type)) {
                myStays[PlaceOf(record)] = false;
            }
        }
        open.erase(std::remove_if(open.begin(), open.end(),
                                  [this](const auto* record) { return !myStays[PlaceOf(*record)]; }),
                   open.end());
        std::vector<RecordId> references;
        while (!open.empty()) {
            references.clear();
            myText.AppendReferences(*open.back(), references);
            open.pop_back();
            for (const RecordId id : references) {
                const ClearText::Record* record = myText.Find(id);
                const bool isLoose = record != nullptr && !myStays[PlaceOf(*record)] &&
                                     std::find(std::begin(Loose), std::end(Loose),
                                               myText.TypeName(*record)) != std::end(Loose);
                if (isLoose) {
                    myStays[PlaceOf(*record)] = true;
                    open.push_back(record);
                }
            }
        }
    }

    std::string Print() const
    {
        std::vector<const ClearText::Record*> records;
        for (const ClearText::Record& record : myText.Records()) {
            records.push_back(&record);
        }
        std::sort(records.begin(), records.end(),
                  [](const auto* left, const auto* right) { return left->offset < right->offset; });
        const std::string& bytes = myText.Bytes();
        std::string result = bytes.substr(0, bytes.rfind('#', records.front()->offset));
        for (const ClearText::Record* record : records) {
            if (myStays[PlaceOf(*record)]) {
                result += '#' + std::to_string(record->id) + '=';
                result += myText.TypeName(*record);
                result += '(';
                result.append(bytes, record->offset, record->size);
                result += ";\n";
            }
        }
        return result + "ENDSEC;\nEND-ISO-10303-21;\n";
    }

    const ClearText& myText;
    const StepStructure& myStructure;
    std::vector<bool> myStays; // by the place of the record
};

} // namespace

std::string WithoutInstances(const ClearText& text, const StepStructure& structure)
{
    return Subset(text, structure).Make();
}

} // namespace cadex::step
