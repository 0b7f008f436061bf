// Writes chunks to a stream that cannot go back, although the length of a chunk stands before it: everything
// is written twice, first to learn the lengths and then in earnest.
//
//     ChunkWriter out(sink);
//     do {
//         out.Begin(code::LayerTable);
//         ...
//         out.End();
//     } while (out.Again());
//     bool ok = out.Ok();
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "sdk/rhino/RhinoChunks.h"
#include "sdk/text/AtomicFile.h"

namespace cadex::rhino {

/// The version of the library whose layout of version 5 is written.
inline constexpr std::int32_t WrittenLibrary = 201209145;
inline constexpr std::int32_t WrittenVersion = 50;

class ChunkWriter
{
public:
    /// The sink must outlive the writer.
    explicit ChunkWriter(text::ByteSink& sink) : mySink(sink) {}

    /// In the first of the two passes nothing is written: large data need not be made, their size is enough.
    bool IsMeasuring() const { return myIsMeasuring; }
    /// To be called at the end of each pass: true after the first. Both passes must write the same.
    bool Again();
    /// False once the sink has failed, or the passes differed.
    bool Ok() const { return !myHasFailed; }
    /// Bytes so far.
    std::uint64_t Position() const { return myPosition; }

    void Begin(std::uint32_t typeCode);
    void End();
    void Short(std::uint32_t typeCode, std::int64_t value);

    template <typename T>
    void Put(const T& value)
    {
        static_assert(std::is_trivially_copyable_v<T>);
        Bytes({reinterpret_cast<const char*>(&value), sizeof(T)});
    }
    template <typename T>
    void PutAll(std::initializer_list<T> values)
    {
        for (const T& value : values) {
            Put(value);
        }
    }
    void Bytes(std::string_view bytes);
    /// While measuring: as many bytes, whatever they will be.
    void Skip(std::size_t size) { myPosition += size; }
    void Text(const Base_UTF16String& text);
    /// A buffer as it stands, not packed: its bytes stay cheap to write and to read.
    template <typename Make>
    void Buffer(std::size_t size, const Make& make)
    {
        Put(static_cast<std::uint32_t>(size));
        if (size == 0) {
            return;
        }
        if (myIsMeasuring) {
            Skip(sizeof(std::uint32_t) + 1 + size);
            return;
        }
        const std::string bytes = make();
        Put(ChecksumOf(bytes));
        Put(std::uint8_t{0});
        Bytes(bytes);
    }

    /// An anonymous chunk with its version; End() closes it.
    void BeginVersioned(std::int32_t major, std::int32_t minor);
    /// The wrapper around an object of a class, up to its data; EndData() and then EndObject() close it.
    /// Between them stands the user data.
    void BeginObject(const Uuid& classId);
    void EndData() { End(); }
    void EndObject();

    /// User data of a class, up to the data that the class defines; EndUserData() closes them.
    void BeginUserData(const Uuid& classId);
    void EndUserData();
    /// The matrix that changes nothing: sixteen numbers.
    void PutIdentity();

    static std::uint32_t ChecksumOf(std::string_view bytes);

private:
    struct Open
    {
        std::uint32_t typeCode;
        std::uint32_t crc;
        std::size_t number;  ///< of the chunk, in order
        std::uint64_t begin; ///< of its body
    };

    void Settle();
    void Flush();

    text::ByteSink& mySink;
    bool myIsMeasuring = true;
    bool myHasFailed = false;
    std::uint64_t myPosition = 0;
    std::string myBuffer;
    std::size_t myUnsettled = 0; ///< bytes of the buffer from here on are in no checksum yet
    std::vector<Open> myOpen;
    std::vector<std::uint64_t> myLengths; ///< of all chunks, in order
    std::size_t myNext = 0;
};

} // namespace cadex::rhino
