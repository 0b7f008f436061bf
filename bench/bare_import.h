// Reading a STEP or IGES file with OpenCASCADE alone: the yardstick of the import benchmarks.
#pragma once

#include <string>
#include <vector>

/// Triangles of every unique part, positions in millimetres and unit normals, three numbers a vertex; three
/// vertex numbers a triangle.
struct BareMesh
{
    bool read = false;
    std::vector<double> positions;
    std::vector<float> normals;
    std::vector<int> indices;
};

/// Reads, meshes (chord 0.0076 of each edge's size, angle 24 degrees) and extracts. The format follows from
/// the extension.
BareMesh BareImport(const std::string& path);
