#pragma once

#include <QByteArray>

#include <cstdint>

namespace Zemtar::ImageFiles {

/// Reads the bytes of a picture file field by field; after the first field that is not there, everything is 0
/// and IsGood false.
class PictureBytes
{
public:
    /// The bytes must outlive the reader.
    explicit PictureBytes(const QByteArray& bytes) : m_bytes(bytes) {}

    bool IsGood() const { return m_isGood; }
    qint64 Position() const { return m_position; }
    qint64 Size() const { return m_bytes.size(); }
    qint64 Left() const { return m_isGood ? Size() - m_position : 0; }

    unsigned Byte() { return static_cast<unsigned>(Big(1)); }
    unsigned Big16() { return static_cast<unsigned>(Big(2)); }
    std::uint32_t Big32() { return static_cast<std::uint32_t>(Big(4)); }
    unsigned Little16()
    {
        const unsigned low = Byte();
        return low | (Byte() << 8);
    }
    std::uint32_t Little32()
    {
        const std::uint32_t low = Little16();
        return low | (std::uint32_t{Little16()} << 16);
    }

    /// Goes on by `count` bytes, which must be there; a negative count goes back.
    void Skip(qint64 count) { Seek(m_position + count); }

    void Seek(qint64 position)
    {
        m_isGood = m_isGood && position >= 0 && position <= Size();
        m_position = m_isGood ? position : 0;
    }

private:
    std::uint64_t Big(int count)
    {
        if (Left() < count) {
            m_isGood = false;
            return 0;
        }
        std::uint64_t value = 0;
        for (int i = 0; i < count; ++i) {
            value = (value << 8) | static_cast<unsigned char>(m_bytes[m_position++]);
        }
        return value;
    }

    const QByteArray& m_bytes;
    qint64 m_position = 0;
    bool m_isGood = true;
};

} // namespace Zemtar::ImageFiles
