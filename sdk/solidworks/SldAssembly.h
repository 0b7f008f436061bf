// Which parts and assemblies a SolidWorks file consists of, and where they stand: the tree of components that
// newer files keep beside their binary streams.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace cadex::solidworks {

/// Rows of a 3 x 4 matrix, the last column in millimetres.
using Matrix = std::array<double, 12>;
inline constexpr Matrix Identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};

/// A model in one of its configurations.
struct Model
{
    struct Reference
    {
        std::string name;  ///< of the component: "Wheel-2"
        std::string model; ///< its identity
        Matrix placement = Identity;
        bool isHidden = false;     ///< by the user
        bool isSuppressed = false; ///< not there in this configuration
        bool isPlaced = false;     ///< the placement could be read
    };

    std::string name;
    std::string configuration;
    std::string configurationNumber;
    std::vector<Reference> references; ///< none in a part
};

struct ModelTable
{
    std::map<std::string, Model, std::less<>> models; ///< by identity
    std::string root;                                 ///< identity; empty when the file does not tell

    const Model* Find(std::string_view identity) const;
    const Model* Root() const { return Find(root); }
};

/// Of the stream "swXmlContents/COMPINSTANCETREE" of an assembly or "swXmlContents/Features" of a part. The
/// root is the model in the configuration that was in use last.
ModelTable ReadModels(std::string_view xml);

} // namespace cadex::solidworks
