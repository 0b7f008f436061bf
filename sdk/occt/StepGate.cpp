#include "sdk/occt/StepGate.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <unordered_set>

namespace cadex {
namespace occt {
namespace {

// What the kernel starts from when it makes shapes.
constexpr std::string_view Starts[] = {
    "PRODUCT_DEFINITION",
    "PRODUCT_DEFINITION_WITH_ASSOCIATED_DOCUMENTS",
    "PRODUCT_DEFINITION_SHAPE",
    "NEXT_ASSEMBLY_USAGE_OCCURRENCE",
    "SHAPE_DEFINITION_REPRESENTATION",
    "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION",
    "SHAPE_REPRESENTATION_RELATIONSHIP",
};

} // namespace

bool NeedsAnyForShapes(const StepText& text, const std::vector<StepId>& records)
{
    if (records.empty()) {
        return false;
    }
    const std::unordered_set<StepId> wanted(records.begin(), records.end());
    if (wanted.count(0) != 0) {
        return true;
    }
    std::vector<StepId> open;
    for (const StepText::Record& record : text.Records()) {
        const std::string_view type = text.TypeName(record);
        const bool starts = std::find(std::begin(Starts), std::end(Starts), type) != std::end(Starts);
        if (starts || EndsWith(type, "SHAPE_REPRESENTATION")) {
            open.push_back(record.id);
        }
    }
    std::unordered_set<StepId> seen(open.begin(), open.end());
    std::vector<StepId> references;
    while (!open.empty()) {
        const StepId id = open.back();
        open.pop_back();
        if (wanted.count(id) != 0) {
            return true;
        }
        const StepText::Record* record = text.Find(id);
        if (record == nullptr) {
            continue;
        }
        references.clear();
        text.AppendReferences(*record, references);
        for (const StepId next : references) {
            if (seen.insert(next).second) {
                open.push_back(next);
            }
        }
    }
    return false;
}

} // namespace occt
} // namespace cadex
