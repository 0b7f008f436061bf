// 3DM files in memory, table by table.
#pragma once

#include <sstream>
#include <string>

#include "sdk/rhino/RhinoChunkWriter.h"
#include "sdk/rhino/RhinoTables.h"
#include "sdk/text/AtomicFile.h"

namespace rhinotest {

using namespace cadex;
namespace code = rhino::code;

/// A file of one table after the other, as `write` fills them.
template <typename Write>
std::string FileOf(const Write& write)
{
    std::ostringstream stream;
    text::StreamSink sink(stream);
    rhino::ChunkWriter out(sink);
    do {
        out.Bytes("3D Geometry File Format       50");
        out.Begin(code::Comment);
        out.End();
        out.Begin(code::PropertiesTable);
        out.Short(code::LibraryVersion, rhino::WrittenLibrary);
        out.Short(code::EndOfTable, 0);
        out.End();
        write(out);
        const std::uint64_t size = out.Position() + 20;
        out.Begin(code::EndOfFile);
        out.Put(size);
        out.End();
    } while (out.Again());
    return stream.str();
}

inline rhino::Uuid Number(std::uint8_t number)
{
    rhino::Uuid id;
    id.bytes[0] = number;
    return id;
}

} // namespace rhinotest
