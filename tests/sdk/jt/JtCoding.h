// The coding side of packed lists, written for the tests: bits, arithmetic codes, packets of both forms.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "sdk/jt/JtElements.h"

namespace jttest {

using Values = std::vector<std::int32_t>;

/// Bytes in the order and layout of a format.
class Composer
{
public:
    explicit Composer(const cadex::jt::Format& format) : myFormat(format) {}

    std::string bytes;

    const cadex::jt::Format& FileFormat() const { return myFormat; }

    template <typename T>
    Composer& Put(T value)
    {
        std::string copy(reinterpret_cast<const char*>(&value), sizeof(T));
        if (myFormat.isBigEndian) {
            std::reverse(copy.begin(), copy.end());
        }
        bytes += copy;
        return *this;
    }
    Composer& U8(std::uint8_t value) { return Put(value); }
    Composer& I32(std::int32_t value) { return Put(value); }
    Composer& U32(std::uint32_t value) { return Put(value); }
    Composer& F32(float value) { return Put(value); }
    /// The number of a version; none before version 9.
    Composer& Version(int number)
    {
        return myFormat.IsV10()  ? U8(static_cast<std::uint8_t>(number))
               : myFormat.IsV8() ? *this
                                 : Put(static_cast<std::int16_t>(number));
    }
    Composer& Id(const cadex::jt::Guid& id)
    {
        const auto& b = id.bytes;
        U32(static_cast<std::uint32_t>(b[0]) << 24 | static_cast<std::uint32_t>(b[1]) << 16 |
            static_cast<std::uint32_t>(b[2]) << 8 | b[3]);
        Put(static_cast<std::uint16_t>(b[4] << 8 | b[5]));
        Put(static_cast<std::uint16_t>(b[6] << 8 | b[7]));
        bytes.append(reinterpret_cast<const char*>(&b[8]), 8);
        return *this;
    }
    Composer& Text(const std::u16string& text)
    {
        I32(static_cast<std::int32_t>(text.size()));
        for (const char16_t c : text) {
            Put(static_cast<std::uint16_t>(c));
        }
        return *this;
    }
    /// `id` stands where elements of the format have one.
    Composer& Element(const cadex::jt::Guid& kind, cadex::jt::BaseType type, bool hasId, std::int32_t id,
                      const std::string& data)
    {
        I32(static_cast<std::int32_t>(17 + (hasId ? 4 : 0) + data.size())).Id(kind);
        U8(static_cast<std::uint8_t>(type));
        if (hasId) {
            I32(id);
        }
        bytes += data;
        return *this;
    }

private:
    cadex::jt::Format myFormat;
};

/// The highest bit first.
class BitWriter
{
public:
    void Put(std::uint32_t value, int count)
    {
        for (int i = count; i-- > 0;) {
            bits.push_back((value >> i & 1) != 0);
        }
    }
    std::vector<std::uint32_t> Words() const
    {
        std::vector<std::uint32_t> words((bits.size() + 31) / 32, 0);
        for (std::size_t i = 0; i < bits.size(); ++i) {
            words[i / 32] |= (bits[i] ? 1U : 0U) << (31 - i % 32);
        }
        return words;
    }
    std::string Octets() const
    {
        std::string octets((bits.size() + 7) / 8, '\0');
        for (std::size_t i = 0; i < bits.size(); ++i) {
            octets[i / 8] = static_cast<char>(octets[i / 8] | (bits[i] ? 1 << (7 - i % 8) : 0));
        }
        return octets;
    }

    std::vector<bool> bits;
};

/// Bits of a number in two's complement.
inline int WidthOf(std::int32_t value)
{
    return 1 + static_cast<int>(std::bit_width(static_cast<std::uint32_t>(value < 0 ? ~value : value)));
}

/// The coder of the same article as the decoder's.
class ArithmeticCoder
{
public:
    explicit ArithmeticCoder(BitWriter& out) : myOut(out) {}

    void Put(std::uint32_t below, std::uint32_t above, std::uint32_t total)
    {
        const std::uint32_t range = myHigh - myLow + 1;
        myHigh = myLow + range * above / total - 1;
        myLow = myLow + range * below / total;
        for (;;) {
            if ((myHigh & 0x8000) == (myLow & 0x8000)) {
                PutBit(myHigh >> 15 & 1);
            } else if ((myLow & 0x4000) != 0 && (myHigh & 0x4000) == 0) {
                ++myWaiting;
                myLow &= 0x3FFF;
                myHigh |= 0x4000;
            } else {
                return;
            }
            myLow = myLow << 1 & 0xFFFF;
            myHigh = (myHigh << 1 | 1) & 0xFFFF;
        }
    }
    void Finish()
    {
        ++myWaiting;
        PutBit(myLow >> 14 & 1);
    }

private:
    void PutBit(std::uint32_t bit)
    {
        myOut.Put(bit, 1);
        for (; myWaiting > 0; --myWaiting) {
            myOut.Put(1 - bit, 1);
        }
    }

    BitWriter& myOut;
    std::uint32_t myLow = 0;
    std::uint32_t myHigh = 0xFFFF;
    int myWaiting = 0;
};

/// Values and how often they occur; those that occur once escape into a list of their own.
struct Statistics
{
    std::map<std::int32_t, std::uint32_t> counts;
    Values outside;
    std::uint32_t total = 0;

    explicit Statistics(const Values& values)
    {
        for (const std::int32_t value : values) {
            ++counts[value];
        }
        for (const std::int32_t value : values) {
            if (counts[value] == 1) {
                outside.push_back(value);
            }
        }
        std::erase_if(counts, [](const auto& entry) { return entry.second == 1; });
        total = static_cast<std::uint32_t>(values.size());
    }

    bool HasEscape() const { return !outside.empty(); }
    std::size_t EntryCount() const { return counts.size() + (HasEscape() ? 1 : 0); }

    /// The bounds of a value's part of the total; the escape's come first.
    std::pair<std::uint32_t, std::uint32_t> PartOf(std::int32_t value) const
    {
        auto below = static_cast<std::uint32_t>(outside.size());
        for (const auto& [known, count] : counts) {
            if (known == value) {
                return {below, below + count};
            }
            below += count;
        }
        return {0, static_cast<std::uint32_t>(outside.size())};
    }

    /// The entries of a table: symbol (escape: 0), count, value.
    void PutEntries(BitWriter& out, std::int32_t least) const
    {
        if (HasEscape()) {
            out.Put(0, 8);
            out.Put(static_cast<std::uint32_t>(outside.size()), 16);
            out.Put(0, 20);
        }
        std::uint32_t symbol = 3;
        for (const auto& [value, count] : counts) {
            out.Put(symbol++, 8);
            out.Put(count, 16);
            out.Put(static_cast<std::uint32_t>(value - least), 20);
        }
    }
};

enum class Coding
{
    Plain,
    BitLength, ///< of the second form: all of one width
    Runs,      ///< second form alone
    Arithmetic,
    Chopped ///< second form alone
};

inline void PutWords(Composer& out, const BitWriter& bits)
{
    for (const std::uint32_t word : bits.Words()) {
        out.U32(word);
    }
}

/// A packet of version 8.
inline void PutFirstForm(Composer& out, const Values& values, Coding coding)
{
    const auto count = static_cast<std::int32_t>(values.size());
    if (coding == Coding::Plain) {
        out.U8(0).I32(count);
        std::for_each(values.begin(), values.end(), [&](std::int32_t value) { out.I32(value); });
        return;
    }
    BitWriter bits;
    if (coding == Coding::BitLength) {
        int width = 0;
        for (const std::int32_t value : values) {
            const int needed = value == 0 ? 0 : (WidthOf(value) + 1) / 2 * 2;
            if (needed == width) {
                bits.Put(0, 1);
            } else {
                const std::uint32_t direction = needed > width ? 1 : 0;
                bits.Put(1, 1);
                for (; width != needed; width += direction != 0 ? 2 : -2) {
                    bits.Put(direction, 1);
                }
                bits.Put(1 - direction, 1);
            }
            bits.Put(static_cast<std::uint32_t>(value), width);
        }
        out.U8(1);
    } else {
        const Statistics statistics(values);
        const std::int32_t least = statistics.counts.empty() ? 0 : statistics.counts.begin()->first;
        BitWriter table;
        table.Put(static_cast<std::uint32_t>(statistics.EntryCount()), 32);
        for (const std::uint32_t width : {8U, 16U, 20U, 0U}) {
            table.Put(width, 6);
        }
        table.Put(static_cast<std::uint32_t>(least), 32);
        statistics.PutEntries(table, least);
        out.U8(3).U8(1);
        out.bytes += table.Octets();
        out.I32(static_cast<std::int32_t>(statistics.outside.size()));
        if (statistics.HasEscape()) {
            PutFirstForm(out, statistics.outside, Coding::BitLength);
        }
        ArithmeticCoder coder(bits);
        for (const std::int32_t value : values) {
            const auto [below, above] = statistics.PartOf(value);
            coder.Put(below, above, statistics.total);
        }
        coder.Finish();
    }
    out.I32(static_cast<std::int32_t>(bits.bits.size())).I32(count);
    out.I32(static_cast<std::int32_t>(bits.Words().size()));
    PutWords(out, bits);
}

/// A packet of version 9 on.
inline void PutSecondForm(Composer& out, const Values& values, Coding coding)
{
    out.I32(static_cast<std::int32_t>(values.size()));
    if (values.empty()) {
        return;
    }
    const auto [least, most] = std::minmax_element(values.begin(), values.end());
    BitWriter bits;
    if (coding == Coding::Chopped) {
        const auto span = static_cast<std::uint32_t>(*most) - static_cast<std::uint32_t>(*least);
        const int width = std::max<int>(1, static_cast<int>(std::bit_width(span)));
        const int chop = (width + 1) / 2;
        Values high;
        Values low;
        for (const std::int32_t value : values) {
            const auto above = static_cast<std::uint32_t>(value) - static_cast<std::uint32_t>(*least);
            high.push_back(static_cast<std::int32_t>(above >> (width - chop)));
            low.push_back(static_cast<std::int32_t>(above & ((1U << (width - chop)) - 1)));
        }
        out.U8(4).U8(static_cast<std::uint8_t>(chop)).I32(*least).U8(static_cast<std::uint8_t>(width));
        PutSecondForm(out, high, Coding::Arithmetic);
        PutSecondForm(out, low, Coding::BitLength);
        return;
    }
    if (coding == Coding::Plain) {
        out.U8(0).I32(static_cast<std::int32_t>(32 * values.size()));
        std::for_each(values.begin(), values.end(), [&](std::int32_t value) { out.I32(value); });
        return;
    }
    if (coding == Coding::BitLength) {
        bits.Put(0, 1);
        bits.Put(static_cast<std::uint32_t>(WidthOf(*least)), 6);
        bits.Put(static_cast<std::uint32_t>(WidthOf(*most)), 6);
        bits.Put(static_cast<std::uint32_t>(*least), WidthOf(*least));
        bits.Put(static_cast<std::uint32_t>(*most), WidthOf(*most));
        const auto span = static_cast<std::uint32_t>(*most) - static_cast<std::uint32_t>(*least);
        for (const std::int32_t value : values) {
            bits.Put(static_cast<std::uint32_t>(value) - static_cast<std::uint32_t>(*least),
                     static_cast<int>(std::bit_width(span)));
        }
    } else if (coding == Coding::Runs) {
        const std::int32_t mean = values[values.size() / 2];
        bits.Put(1, 1);
        bits.Put(static_cast<std::uint32_t>(mean), 32);
        bits.Put(3, 3); // bits of a step: -4 and 3 go on
        bits.Put(2, 3); // bits of a run
        int width = 0;
        for (std::size_t i = 0; i < values.size();) {
            const auto residual = [&](std::size_t k) {
                return static_cast<std::int32_t>(static_cast<std::uint32_t>(values[k]) -
                                                 static_cast<std::uint32_t>(mean));
            };
            const int needed = residual(i) == 0 ? 0 : WidthOf(residual(i));
            std::size_t run = 1;
            while (run < 3 && i + run < values.size() &&
                   (residual(i + run) == 0 ? 0 : WidthOf(residual(i + run))) <= needed) {
                ++run;
            }
            int step = needed - width;
            for (; step >= 3; step -= 3) {
                bits.Put(3, 3);
            }
            for (; step <= -4; step += 4) {
                bits.Put(4, 3);
            }
            bits.Put(static_cast<std::uint32_t>(step), 3);
            width = needed;
            bits.Put(static_cast<std::uint32_t>(run), 2);
            for (std::size_t k = 0; k < run; ++k) {
                bits.Put(static_cast<std::uint32_t>(residual(i + k)), width);
            }
            i += run;
        }
    } else {
        const Statistics statistics(values);
        const std::int32_t first = statistics.counts.empty() ? 0 : statistics.counts.begin()->first;
        ArithmeticCoder coder(bits);
        for (const std::int32_t value : values) {
            const auto [below, above] = statistics.PartOf(value);
            coder.Put(below, above, statistics.total);
        }
        coder.Finish();
        out.U8(3).I32(static_cast<std::int32_t>(bits.bits.size()));
        PutWords(out, bits);
        BitWriter table;
        table.Put(static_cast<std::uint32_t>(statistics.EntryCount()), 16);
        for (const std::uint32_t width : {8U, 16U, 20U}) {
            table.Put(width, 6);
        }
        table.Put(static_cast<std::uint32_t>(first), 32);
        statistics.PutEntries(table, first);
        out.bytes += table.Octets();
        PutSecondForm(out, statistics.outside, Coding::BitLength);
        return;
    }
    out.U8(1).I32(static_cast<std::int32_t>(bits.bits.size()));
    PutWords(out, bits);
}

inline void PutPacket(Composer& out, const Values& values, Coding coding)
{
    if (out.FileFormat().IsV8()) {
        PutFirstForm(out, values, coding);
    } else {
        PutSecondForm(out, values, coding);
    }
}

/// What is stored of values that are predicted by the one before.
inline Values Differences(const Values& values)
{
    Values result = values;
    for (std::size_t i = 4; i < values.size(); ++i) {
        result[i] = values[i] - values[i - 1];
    }
    return result;
}

} // namespace jttest
