#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/ModelData_PolyPointSet.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include <algorithm>

#include "sdk/model/Elements.h"
#include "sdk/model/TriangleSets.h"

namespace cadex {

namespace {

using internal::CornerStream;
using internal::TriangleSetImpl;

/// The polygons of one call: indices, and how many each polygon takes; without counts, all are triangles.
struct Polygons
{
    const int* indices;
    const int* counts;
    std::size_t number;

    /// Calls `take(a, b, c)` with the indices of each triangle, larger polygons as fans.
    template <typename Take>
    void ForEachTriangle(Take take) const
    {
        const int* corner = indices;
        for (std::size_t i = 0; i < number; ++i) {
            const int count = counts != nullptr ? std::max(counts[i], 0) : 3;
            for (int k = 2; k < count; ++k) {
                take(corner[0], corner[k - 1], corner[k]);
            }
            corner += count;
        }
    }

    std::size_t NumberOfTriangles() const
    {
        if (counts == nullptr) {
            return number;
        }
        std::size_t sum = 0;
        for (std::size_t i = 0; i < number; ++i) {
            sum += static_cast<std::size_t>(std::max(counts[i] - 2, 0));
        }
        return sum;
    }
};

bool IsIndex(int index, std::size_t number)
{
    return index >= 0 && static_cast<std::size_t>(index) < number;
}

/// Makes room for `more` elements; exactly, unless the array keeps growing in small steps.
template <typename T>
void Grow(std::vector<T>& array, std::size_t more)
{
    const std::size_t needed = array.size() + more;
    if (needed > array.capacity()) {
        array.reserve(array.empty() ? needed : std::max(needed, array.size() * 2));
    }
}

template <typename Impl, typename Handle>
Impl& Ensure(Handle& handle)
{
    if (handle.IsNull()) {
        handle.SetImpl(new Impl);
    }
    return *static_cast<Impl*>(handle.Impl());
}

void AddPositions(TriangleSetImpl& set, const ModelData_Point* points, std::size_t pointNb,
                  const Polygons& polygons)
{
    if (points == nullptr) {
        pointNb = 0;
    }
    const std::size_t first = set.points.size();
    Grow(set.points, pointNb);
    set.points.insert(set.points.end(), points, points + pointNb);
    if (polygons.indices == nullptr) {
        return;
    }
    Grow(set.indices, polygons.NumberOfTriangles() * 3);
    polygons.ForEachTriangle([&](int a, int b, int c) {
        if (IsIndex(a, pointNb) && IsIndex(b, pointNb) && IsIndex(c, pointNb)) {
            for (const int corner : {a, b, c}) {
                set.indices.push_back(static_cast<U32>(first + static_cast<std::size_t>(corner)));
            }
        } else {
            set.rejected.push_back(set.offered);
        }
        ++set.offered;
    });
    // The arrays may have moved.
    set.normals.index = set.normals.indices.empty() ? set.indices.data() : set.normals.indices.data();
    set.uvs.index = set.uvs.indices.empty() ? set.indices.data() : set.uvs.indices.data();
}

/// Appends one corner's index; as long as all agree with those of the positions, none is stored.
template <typename T>
void PushCorner(const TriangleSetImpl& set, CornerStream<T>& stream, U32 index)
{
    if (stream.indices.empty() && index != set.indices[stream.corners]) {
        stream.indices.reserve(set.indices.size());
        stream.indices.assign(set.indices.begin(),
                              set.indices.begin() + static_cast<std::ptrdiff_t>(stream.corners));
        stream.indices.push_back(index);
    } else if (!stream.indices.empty()) {
        stream.indices.push_back(index);
    }
    ++stream.corners;
}

template <typename T>
void AddValues(TriangleSetImpl& set, CornerStream<T>& stream, const T* values, std::size_t valueNb,
               const Polygons& polygons)
{
    if (values == nullptr || valueNb == 0 || polygons.indices == nullptr) {
        return;
    }
    const std::size_t first = stream.values.size();
    Grow(stream.values, valueNb);
    stream.values.insert(stream.values.end(), values, values + valueNb);
    std::size_t zero = 0; // where the value of corners with a bad index lies, once one is needed
    auto position = [&](int index) {
        if (IsIndex(index, valueNb)) {
            return static_cast<U32>(first + static_cast<std::size_t>(index));
        }
        if (zero == 0) {
            zero = stream.values.size();
            stream.values.push_back(T());
        }
        return static_cast<U32>(zero);
    };
    auto rejected = std::lower_bound(set.rejected.begin(), set.rejected.end(), stream.offered);
    polygons.ForEachTriangle([&](int a, int b, int c) {
        const std::size_t ordinal = stream.offered++;
        if (rejected != set.rejected.end() && *rejected == ordinal) {
            ++rejected;
        } else if (stream.corners + 3 <= set.indices.size()) {
            PushCorner(set, stream, position(a));
            PushCorner(set, stream, position(b));
            PushCorner(set, stream, position(c));
        }
    });
    stream.index = stream.indices.empty() ? set.indices.data() : stream.indices.data();
}

} // namespace

void ModelData_PolyVertexSet::SetAppearance(const ModelData_Appearance& theAppearance)
{
    if (!IsNull()) {
        static_cast<internal::PolyVertexSetImpl*>(Impl())->appearance = theAppearance;
    }
}

ModelData_Appearance ModelData_PolyVertexSet::Appearance() const
{
    return IsNull() ? ModelData_Appearance()
                    : static_cast<const internal::PolyVertexSetImpl*>(Impl())->appearance;
}

ModelData_PolyVertexSet::IndexType ModelData_PolyVertexSet::NumberOfVertices() const
{
    return IsNull()
               ? 0
               : static_cast<IndexType>(static_cast<internal::PolyVertexSetImpl*>(Impl())->points.size());
}

ModelData_PolyPointSet::ModelData_PolyPointSet(initialized)
{
    SetImpl(new internal::PolyVertexSetImpl(internal::TypePolyPointSet));
}

ModelData_IndexedTriangleSet::ModelData_IndexedTriangleSet(initialized)
{
    SetImpl(new TriangleSetImpl);
}

void ModelData_IndexedTriangleSet::AddCoordinates(const CoordType theVertices[], std::size_t theVertexNb,
                                                  const IndexType theIndices[], const IndexType theCounts[],
                                                  std::size_t theCountNb)
{
    const bool usable = theIndices != nullptr && theCounts != nullptr;
    AddPositions(Ensure<TriangleSetImpl>(*this), theVertices, theVertexNb,
                 {usable ? theIndices : nullptr, theCounts, theCountNb});
}

void ModelData_IndexedTriangleSet::AddCoordinates(const CoordType theVertices[], std::size_t theVertexNb,
                                                  const IndexType theIndices[], std::size_t theIndexNb)
{
    AddPositions(Ensure<TriangleSetImpl>(*this), theVertices, theVertexNb,
                 {theIndices, nullptr, theIndexNb / 3});
}

void ModelData_IndexedTriangleSet::AddNormals(const NormalType theNormals[], std::size_t theNormalNb,
                                              const IndexType theIndices[], const IndexType theCounts[],
                                              std::size_t theCountNb)
{
    auto& set = Ensure<TriangleSetImpl>(*this);
    const bool usable = theIndices != nullptr && theCounts != nullptr;
    AddValues(set, set.normals, theNormals, theNormalNb,
              {usable ? theIndices : nullptr, theCounts, theCountNb});
}

void ModelData_IndexedTriangleSet::AddNormals(const NormalType theNormals[], std::size_t theNormalNb,
                                              const IndexType theIndices[], std::size_t theIndexNb)
{
    auto& set = Ensure<TriangleSetImpl>(*this);
    AddValues(set, set.normals, theNormals, theNormalNb, {theIndices, nullptr, theIndexNb / 3});
}

void ModelData_IndexedTriangleSet::AddUVCoordinates(const UVCoordinateType theUVs[], std::size_t theUVNb,
                                                    const IndexType theIndices[], const IndexType theCounts[],
                                                    std::size_t theCountNb)
{
    auto& set = Ensure<TriangleSetImpl>(*this);
    const bool usable = theIndices != nullptr && theCounts != nullptr;
    AddValues(set, set.uvs, theUVs, theUVNb, {usable ? theIndices : nullptr, theCounts, theCountNb});
}

void ModelData_IndexedTriangleSet::AddUVCoordinates(const UVCoordinateType theUVs[], std::size_t theUVNb,
                                                    const IndexType theIndices[], std::size_t theIndexNb)
{
    auto& set = Ensure<TriangleSetImpl>(*this);
    AddValues(set, set.uvs, theUVs, theUVNb, {theIndices, nullptr, theIndexNb / 3});
}

ModelData_PolyLineSet::ModelData_PolyLineSet(initialized)
{
    SetImpl(new internal::PolyLineSetImpl);
}

void ModelData_PolyLineSet::AddPolyLine(const CoordType* theVertices, std::size_t theSize)
{
    auto& set = Ensure<internal::PolyLineSetImpl>(*this);
    if (theVertices != nullptr) {
        set.points.insert(set.points.end(), theVertices, theVertices + theSize);
    }
    set.starts.push_back(set.points.size());
}

ModelData_PolyRepresentation::ModelData_PolyRepresentation(initialized)
{
    SetImpl(new internal::PolyRepresentationImpl);
}

ModelData_PolyRepresentation::ModelData_PolyRepresentation(const ModelData_PolyShape& theShape)
    : ModelData_PolyRepresentation(initialized())
{
    Add(theShape);
}

void ModelData_PolyRepresentation::Add(const ModelData_PolyShape& theShape)
{
    if (!theShape.IsNull()) {
        Ensure<internal::PolyRepresentationImpl>(*this).shapes.myShapes.push_back(
            internal::MakeHandle<ModelData_PolyVertexSet>(theShape.Impl()));
    }
}

const ModelData_PolyShapeList& ModelData_PolyRepresentation::Get() const
{
    static const ModelData_PolyShapeList none;
    return IsNull() ? none : static_cast<internal::PolyRepresentationImpl*>(Impl())->shapes;
}

void ModelData_PolyRepresentation::Clear()
{
    if (!IsNull()) {
        static_cast<internal::PolyRepresentationImpl*>(Impl())->shapes.myShapes.clear();
    }
}

namespace internal {

ModelData_IndexedTriangleSet MakeTriangleSet(TriangleArrays&& arrays)
{
    ModelData_IndexedTriangleSet handle{initialized()};
    auto& set = *static_cast<TriangleSetImpl*>(handle.Impl());
    const std::size_t pointNb = arrays.points.size();
    std::vector<U32> indices = std::move(arrays.indices);
    std::size_t kept = 0;
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        if (indices[i] < pointNb && indices[i + 1] < pointNb && indices[i + 2] < pointNb) {
            std::copy_n(&indices[i], 3, &indices[kept]);
            kept += 3;
        }
    }
    indices.resize(kept);
    set.points = std::move(arrays.points);
    set.indices = std::move(indices);
    set.offered = kept / 3;
    auto adopt = [&](auto& stream, auto& values) {
        stream.index = set.indices.data();
        if (!values.empty() && values.size() == pointNb) {
            stream.values = std::move(values);
            stream.corners = kept;
            stream.offered = set.offered;
        }
    };
    adopt(set.normals, arrays.normals);
    adopt(set.uvs, arrays.uvs);
    return handle;
}

} // namespace internal
} // namespace cadex
