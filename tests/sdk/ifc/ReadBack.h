// Reads IFC text through the SDK's interface, meshes it and keeps what tests ask for: every node with its
// path, properties, colour and measures in world coordinates.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

namespace ifctest {

struct Node
{
    char kind = 0;    ///< 'A' assembly, 'I' instance, 'P' part
    std::string path; ///< names of instances and elements from the root on, with slashes
    std::string name;
    std::map<std::string, std::string> properties;
    std::array<float, 4> colour{-1, -1, -1, -1}; ///< diffuse; -1 when there is none
    const void* part = nullptr;                  ///< identity of the element
    // of a part: its mesh, in millimetres, where this occurrence stands
    int triangles = 0;
    int polylines = 0;
    bool exact = false;  ///< has a B-rep
    double solid = 0;    ///< volume of the B-rep as the SDK tells it; 0 when it has none
    double enclosed = 0; ///< volume of the mesh, signed
    double area = 0;     ///< of the mesh
    int openEdges = 0;   ///< edges of the mesh, by position, that do not run once each way
    int normals = 0;     ///< corners whose normal points to the side that the triangle faces
    std::array<double, 3> low{1e300, 1e300, 1e300};
    std::array<double, 3> high{-1e300, -1e300, -1e300};
    std::vector<std::array<float, 4>> setColours; ///< of each triangle set
};

struct ReadBack
{
    explicit ReadBack(const std::string& text);

    bool read = false;
    bool transferred = false;
    std::vector<Node> nodes;
    std::vector<std::string> reports; ///< texts of what the engine left out or repaired

    std::vector<const Node*> Parts() const;
    const Node* Named(const std::string& name, char kind) const; ///< null when there is none
};

} // namespace ifctest
