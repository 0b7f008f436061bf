#include "sdk/rhino/RhinoChunkWriter.h"

#include "sdk/text/Inflate.h"

namespace cadex::rhino {

namespace {

constexpr std::size_t BufferSize = std::size_t{1} << 20;

} // namespace

std::uint32_t ChunkWriter::ChecksumOf(std::string_view bytes)
{
    return text::Crc32(0, bytes);
}

bool ChunkWriter::Again()
{
    if (myIsMeasuring) {
        myIsMeasuring = false;
        myPosition = 0;
        myNext = 0;
        myBuffer.reserve(BufferSize * 2);
        return true;
    }
    Flush();
    return false;
}

/// Adds what was written since the last chunk began or ended to the checksum of the chunk that it belongs to.
void ChunkWriter::Settle()
{
    if (!myOpen.empty() && (myOpen.back().typeCode & code::CrcBit) != 0) {
        myOpen.back().crc = text::Crc32(myOpen.back().crc, std::string_view(myBuffer).substr(myUnsettled));
    }
    myUnsettled = myBuffer.size();
}

void ChunkWriter::Flush()
{
    Settle();
    myHasFailed = myHasFailed || !mySink.Write(myBuffer);
    myBuffer.clear();
    myUnsettled = 0;
}

void ChunkWriter::Bytes(std::string_view bytes)
{
    myPosition += bytes.size();
    if (myIsMeasuring || myHasFailed) {
        return;
    }
    if (bytes.size() >= BufferSize) { // goes out as it is
        Flush();
        if (!myOpen.empty()) {
            myOpen.back().crc = text::Crc32(myOpen.back().crc, bytes);
        }
        myHasFailed = myHasFailed || !mySink.Write(bytes);
        return;
    }
    myBuffer.append(bytes);
    if (myBuffer.size() >= BufferSize) {
        Flush();
    }
}

void ChunkWriter::Begin(std::uint32_t typeCode)
{
    Settle();
    const std::size_t number = myNext++;
    if (myIsMeasuring) {
        myLengths.push_back(0);
    } else if (number >= myLengths.size()) {
        myHasFailed = true;
        return;
    }
    Put(typeCode);
    Put(myLengths[number]);
    myUnsettled = myBuffer.size();
    myOpen.push_back({typeCode, 0, number, myPosition});
}

void ChunkWriter::End()
{
    if (myOpen.empty()) {
        return;
    }
    Settle();
    const Open chunk = myOpen.back();
    myOpen.pop_back();
    if ((chunk.typeCode & code::CrcBit) != 0) {
        Put(chunk.crc);
        myUnsettled = myBuffer.size();
    }
    const std::uint64_t length = myPosition - chunk.begin;
    if (myIsMeasuring) {
        myLengths[chunk.number] = length;
    } else {
        myHasFailed = myHasFailed || myLengths[chunk.number] != length;
    }
}

void ChunkWriter::Short(std::uint32_t typeCode, std::int64_t value)
{
    Settle();
    Put(typeCode);
    Put(value);
    myUnsettled = myBuffer.size();
}

void ChunkWriter::Text(const Base_UTF16String& text)
{
    if (text.IsEmpty()) {
        Put(std::uint32_t{0});
        return;
    }
    Put(static_cast<std::uint32_t>(text.Length() + 1));
    Bytes({reinterpret_cast<const char*>(text.Data()), (text.Length() + 1) * sizeof(UTF16)});
}

void ChunkWriter::BeginVersioned(std::int32_t major, std::int32_t minor)
{
    Begin(code::Anonymous);
    PutAll({major, minor});
}

void ChunkWriter::BeginObject(const Uuid& classId)
{
    Begin(code::Object);
    Begin(code::ObjectClass);
    Put(classId);
    End();
    Begin(code::ObjectData);
}

void ChunkWriter::EndObject()
{
    Short(code::ObjectEnd, 0);
    End();
}

void ChunkWriter::PutIdentity()
{
    for (int i = 0; i < 16; ++i) {
        Put(i % 5 == 0 ? 1.0 : 0.0);
    }
}

void ChunkWriter::BeginUserData(const Uuid& classId)
{
    constexpr Uuid Application("c8cda597-d957-4625-a4b3-a0b510fc30d4");
    Begin(code::UserData);
    Put(std::uint8_t{0x22}); // version 2.2
    Begin(code::UserDataHeader);
    PutAll({classId, classId});
    Put(std::int32_t{1}); // copied with its object
    PutIdentity();
    Put(Application);
    Put(std::uint8_t{0});
    PutAll({WrittenVersion, WrittenLibrary});
    End();
    Begin(code::Anonymous);
}

void ChunkWriter::EndUserData()
{
    End();
    End();
}

} // namespace cadex::rhino
