// What an imported file measures.
#pragma once

#include <array>
#include <limits>
#include <string>
#include <vector>

#include <cadex/ModelData_Model.hxx>

namespace cadex::test {

struct MeshFacts
{
    bool isRead = false;
    int parts = 0;
    int triangles = 0;
    double area = 0;   ///< of the triangles of all parts, each once, square millimetres
    double volume = 0; ///< that they enclose, signed: positive when the normals point outwards
    double length = 0; ///< of the polylines
    double mass = 0;   ///< exact volume of the bodies, where all parts have one
    int openEdges = 0; ///< edges of the triangles of a part without their counterpart, by position
    int against = 0;   ///< corners whose normal points away from their triangle's
    std::array<double, 3> low{};
    std::array<double, 3> high{};
    std::vector<std::array<double, 3>> normals;
    std::string outline; ///< as Outline gives it
    std::string reports; ///< what the engine refused or left out, line by line
};

/// Of triangles alone, as one part: three numbers a point, three points a triangle.
MeshFacts TriangleFacts(const std::vector<double>& positions, const std::vector<int>& indices);
/// Reads the text as a STEP file, with the importer's default tolerances.
MeshFacts ImportFacts(const std::string& text);
/// Reads the file.
MeshFacts FileFacts(const std::string& path);

} // namespace cadex::test
