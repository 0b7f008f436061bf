#include "sdk/mesh/PolyLines.h"

namespace cadex::mesh {

std::vector<std::vector<ModelData_Point>> ChainsOf(const internal::PolyLineSetImpl& lines)
{
    const auto isSame = [](const ModelData_Point& a, const ModelData_Point& b) { return a == b; };
    std::vector<std::vector<ModelData_Point>> chains;
    for (std::size_t i = 0; i + 1 < lines.starts.size(); ++i) {
        const auto first = lines.points.begin() + static_cast<std::ptrdiff_t>(lines.starts[i]);
        const auto last = lines.points.begin() + static_cast<std::ptrdiff_t>(lines.starts[i + 1]);
        if (first == last) {
            continue;
        }
        const bool goesOn = last - first > 1 && !chains.empty() && chains.back().size() > 1 &&
                            isSame(chains.back().back(), *first);
        if (goesOn) {
            chains.back().insert(chains.back().end(), first + 1, last);
        } else {
            chains.emplace_back(first, last);
        }
    }
    return chains;
}

} // namespace cadex::mesh
