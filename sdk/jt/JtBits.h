// Bits of packed data, the highest of each word first.
#pragma once

#include <cstdint>
#include <vector>

#include "sdk/jt/JtBytes.h"

namespace cadex::jt {

/// Words in the file's byte order.
class WordBits
{
public:
    WordBits(Bytes& in, std::size_t words) : myWords(in.Take(words * 4), in.FileFormat()) {}

    /// `count` from 0 to 32.
    std::uint32_t Get(int count)
    {
        while (myCount < count) {
            if (myWords.Left() == 0) {
                throw Unreadable("packed values end too early");
            }
            Fill();
        }
        return Cut(count);
    }
    /// Zeros behind the end, of which no more than a decoder reads ahead.
    std::uint32_t GetOrZero(int count)
    {
        while (myCount < count) {
            if (myWords.Left() != 0) {
                Fill();
            } else if (++myZeroWords > 4) {
                throw Unreadable("packed values end too early");
            } else {
                myBits <<= 32;
                myCount += 32;
            }
        }
        return Cut(count);
    }
    /// Two's complement.
    std::int32_t GetSigned(int count)
    {
        if (count == 0) {
            return 0;
        }
        const std::uint32_t sign = std::uint32_t{1} << (count - 1);
        return static_cast<std::int32_t>((Get(count) ^ sign) - sign);
    }

private:
    void Fill()
    {
        myBits = (myBits << 32) | myWords.U32();
        myCount += 32;
    }
    std::uint32_t Cut(int count)
    {
        myCount -= count;
        return static_cast<std::uint32_t>((myBits >> myCount) & ((std::uint64_t{1} << count) - 1));
    }

    Bytes myWords;
    std::uint64_t myBits = 0;
    int myCount = 0;
    int myZeroWords = 0;
};

/// Bits of single bytes: the tables that stand before packed values.
class ByteBits
{
public:
    explicit ByteBits(Bytes& in) : myIn(in) {}

    /// `count` from 0 to 32. What is left of the last byte is dropped with this object.
    std::uint32_t Get(int count)
    {
        while (myCount < count) {
            myBits = (myBits << 8) | myIn.U8();
            myCount += 8;
        }
        myCount -= count;
        return static_cast<std::uint32_t>((myBits >> myCount) & ((std::uint64_t{1} << count) - 1));
    }

private:
    Bytes& myIn;
    std::uint64_t myBits = 0;
    int myCount = 0;
};

} // namespace cadex::jt
