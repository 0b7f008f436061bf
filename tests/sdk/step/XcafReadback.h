// What a plain OpenCASCADE program finds in a STEP file: the independent judge of the STEP writer.
#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <vector>

namespace cadex {

/// The corners of a face with three vertices, or the two ends of a free edge, in millimetres of the world.
using Corners = std::vector<std::array<double, 3>>;

struct XcafReadback
{
    explicit XcafReadback(const std::filesystem::path& file);

    bool ok = false;
    /// One line an element, indented by depth: "assembly NAME", "part NAME" or "instance NAME".
    std::string tree;
    /// "r g b a" of every coloured shape, with the kind of shape: "solid 0.2 0.4 0.6 0.5".
    std::vector<std::string> colors;
    std::vector<Corners> triangles; ///< turned as their face
    std::vector<Corners> edges;     ///< of no face
    double volume = 0;
    int solids = 0;
    int parts = 0; ///< distinct ones
};

} // namespace cadex
