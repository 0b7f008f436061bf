// Positions, normals and texture coordinates as shape segments pack them.
//
// NOTE: JT File Format Reference, "Quantized Raw Vertex Data", "Compressed Vertex Coordinate Array" and their
// neighbours; normals: M. Deering, "Geometry Compression", 1995.
#pragma once

#include <cstdint>
#include <vector>

#include "sdk/jt/JtPackets.h"
#include "sdk/model/TriangleSets.h"

namespace cadex::jt {

struct VertexTable
{
    std::vector<ModelData_Point> points; ///< units of the file
    std::vector<ModelData_Vectorf> normals;
    std::vector<ModelData_Point2d> uvs;
    bool hasColours = false;
};

/// Brings one number of each vertex back: value = least + code * (most - least) / (2^bits - 1).
class Quantiser
{
public:
    explicit Quantiser(Bytes& in);

    int Bits() const { return myBits; }
    bool Has(std::int32_t code) const
    {
        return myBits == 32 || static_cast<std::uint32_t>(code) >> myBits == 0;
    }
    double Value(std::int32_t code) const { return myLeast + static_cast<std::uint32_t>(code) * myStep; }

private:
    double myLeast = 0;
    double myStep = 0;
    int myBits = 0;
};

/// The direction that four codes of `bits` bits stand for.
ModelData_Vectorf NormalOf(std::int32_t sextant, std::int32_t octant, std::int32_t theta, std::int32_t psi,
                           int bits);

/// Form of version 8: the distinct vertices, quantised. Which of them the corners use follows.
VertexTable ReadQuantisedVertices(Bytes& in, bool hasNormals, bool hasUvs, bool hasColours, Budget& budget);

/// Form of version 9 on: positions of the topological vertices, and attributes of their own number.
VertexTable ReadVertexRecords(Bytes& in, Budget& budget);

} // namespace cadex::jt
