// The container of a JT file: its header, the table of its segments and the segments, unpacked when they are
// asked for.
//
//     Container file(std::move(bytes));                         // throws Unreadable
//     Bytes graph = file.Open(file.SceneGraph(), storage);
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "sdk/jt/JtBytes.h"

namespace cadex::jt {

/// Types of segments; those of the levels of detail of shapes go from 7 to 16.
namespace segment {
inline constexpr int SceneGraph = 1;
inline constexpr int JtBody = 2;
inline constexpr int Annotations = 3;
inline constexpr int MetaData = 4;
inline constexpr int Shape = 6;
inline constexpr int FirstLevel = 7; ///< of the shapes' levels of detail
inline constexpr int LastShape = 16;
inline constexpr int XtBody = 17;
inline constexpr int Wireframe = 18;
} // namespace segment

struct Segment
{
    int type = 0;
    std::size_t offset = 0; ///< of its data
    std::size_t size = 0;
};

class Container
{
public:
    /// Reads the header and the table and looks at the head of each segment.
    explicit Container(std::string bytes);

    const Format& FileFormat() const { return myFormat; }
    std::size_t Size() const { return myBytes.size(); }
    const std::map<Guid, Segment>& Segments() const { return mySegments; }
    /// Null when the file has none of that id.
    const Segment* Find(const Guid& id) const;
    /// The one that the header names.
    const Segment& SceneGraph() const { return *mySceneGraph; }

    /// The data of a segment; packed ones are unpacked into `storage`, which must outlive the result.
    /// `budget` counts bytes here.
    Bytes Open(const Segment& segment, std::string& storage, Budget& budget) const;

private:
    void ReadHeader();
    void ReadTable(std::size_t offset);

    std::string myBytes;
    Format myFormat;
    Guid mySceneGraphId;
    std::map<Guid, Segment> mySegments;
    const Segment* mySceneGraph = nullptr;
};

} // namespace cadex::jt
