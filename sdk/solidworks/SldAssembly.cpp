#include "sdk/solidworks/SldAssembly.h"

#include <algorithm>
#include <cmath>

#include "sdk/solidworks/SldXml.h"
#include "sdk/text/TextNumbers.h"

namespace cadex::solidworks {

namespace {

constexpr double MillimetresPerMetre = 1000;

/// Sixteen numbers, row by row, of a matrix by which rows are multiplied; metres.
bool ReadPlacement(std::string_view text, Matrix& matrix)
{
    std::array<double, 16> numbers{};
    const char* at = text.data();
    const char* const end = at + text.size();
    for (double& number : numbers) {
        while (at != end && *at == ' ') {
            ++at;
        }
        const char* const next = text::ReadReal(at, end, number);
        if (next == at || !std::isfinite(number)) {
            return false;
        }
        at = next;
    }
    const double scale = numbers[15];
    if (!(std::abs(scale) > 0)) {
        return false;
    }
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            matrix[4 * row + column] = numbers[4 * column + row] / scale;
        }
        matrix[4 * row + 3] = numbers[12 + row] / scale * MillimetresPerMetre;
    }
    return true;
}

bool IsYes(std::string_view value)
{
    return value == "YES" || value == "Yes";
}

} // namespace

const Model* ModelTable::Find(std::string_view identity) const
{
    const auto found = models.find(identity);
    return found == models.end() ? nullptr : &found->second;
}

ModelTable ReadModels(std::string_view xml)
{
    ModelTable table;
    Model* model = nullptr; // that is being read
    for (const XmlElement& element : ReadXml(xml)) {
        if (element.name == "swModel") {
            model = &table.models[std::string(element.Of("id"))];
            *model = Model();
            model->name = element.Of("swName");
            model->configuration = element.Of("swConfigurationName");
            model->configurationNumber = element.Of("swConfigurationId");
        } else if (element.name == "swReference" && model != nullptr) {
            Model::Reference reference;
            reference.name = element.Of("swName");
            reference.name += "-" + std::string(element.Of("swReferenceNumber"));
            reference.model = element.Of("swModelRef");
            reference.isHidden = IsYes(element.Of("swHidden"));
            reference.isSuppressed = IsYes(element.Of("swSuppressed"));
            reference.isPlaced = ReadPlacement(element.Of("swTransform"), reference.placement);
            model->references.push_back(std::move(reference));
        } else if (element.name == "swConfiguration" &&
                   (table.root.empty() || IsYes(element.Of("swMostRecentConfiguration")))) {
            table.root = element.Of("swModelRef");
        }
    }
    return table;
}

} // namespace cadex::solidworks
