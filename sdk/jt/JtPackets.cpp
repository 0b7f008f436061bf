#include "sdk/jt/JtPackets.h"

#include <algorithm>

#include "sdk/jt/JtContexts.h"

namespace cadex::jt {

namespace {

using Values = std::vector<std::int32_t>;

constexpr int DeepestPacket = 8; ///< packets hold packets

enum Codec : std::uint8_t
{
    Plain = 0,
    BitLength = 1,
    Huffman = 2,
    Arithmetic = 3,
    Chopped = 4
};

std::int32_t Add(std::int32_t a, std::int32_t b)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
std::int32_t Subtract(std::int32_t a, std::int32_t b)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

/// The number that a packet says it has; taken from the budget.
std::size_t CountOf(std::int32_t stored, Budget& budget)
{
    if (stored < 0) {
        throw Unreadable("a packed list has a negative count");
    }
    budget.Take(static_cast<std::size_t>(stored));
    return static_cast<std::size_t>(stored);
}

Values PlainValues(Bytes& in, std::size_t count)
{
    Values values(count);
    for (std::int32_t& value : values) {
        value = in.I32();
    }
    return values;
}

/// Widths change in steps of two: 0 keeps it; 1 and a direction, again and again, until the other direction.
Values BitLengthValues(WordBits& bits, std::size_t count)
{
    Values values(count);
    int width = 0;
    for (std::int32_t& value : values) {
        if (bits.Get(1) != 0) {
            const std::uint32_t direction = bits.Get(1);
            do {
                width += direction != 0 ? 2 : -2;
            } while (bits.Get(1) == direction);
            if (width < 0 || width > 32) {
                throw Unreadable("packed values are damaged");
            }
        }
        value = bits.GetSigned(width);
    }
    return values;
}

/// Gives `count` values of the symbols that `next` finds in the context it is asked for.
template <typename Next>
Values SymbolValues(const Next& next, std::size_t symbols, std::size_t count, const Values& outside)
{
    Values values;
    values.reserve(count);
    std::size_t taken = 0;
    std::uint32_t context = 0;
    for (std::size_t i = 0; i < symbols; ++i) {
        const ContextEntry& entry = next(context);
        if (entry.symbol != EscapeSymbol) {
            values.push_back(entry.value);
        } else if (context == 0) { // in other contexts it only leads back
            if (taken == outside.size()) {
                throw Unreadable("packed values are damaged");
            }
            values.push_back(outside[taken++]);
        }
        context = entry.next;
    }
    return values;
}

Values FirstForm(Bytes& in, Budget& budget, int depth)
{
    const std::uint8_t codec = in.U8();
    if (codec > Arithmetic || depth > DeepestPacket) {
        throw Unreadable("a packed list of an unknown kind");
    }
    if (codec == Plain) {
        const std::size_t count = in.Count(4);
        budget.Take(count);
        return PlainValues(in, count);
    }
    std::vector<Context> contexts;
    Values outside;
    if (codec != BitLength) {
        contexts = ReadContexts(in);
        if (in.I32() > 0) {
            outside = FirstForm(in, budget, depth + 1);
        }
    }
    in.I32(); // bits
    const std::size_t count = CountOf(in.I32(), budget);
    const std::size_t symbols = contexts.size() > 1 ? CountOf(in.I32(), budget) : count;
    WordBits bits(in, in.Count(4));
    if (codec == BitLength) {
        return BitLengthValues(bits, count);
    }
    if (codec == Huffman) {
        std::vector<HuffmanTree> trees;
        trees.reserve(contexts.size());
        for (const Context& context : contexts) {
            trees.emplace_back(context);
        }
        const auto next = [&](std::uint32_t context) -> const ContextEntry& {
            return trees[context].Next(bits);
        };
        return SymbolValues(next, symbols, count, outside);
    }
    std::vector<std::vector<std::uint32_t>> sums;
    sums.reserve(contexts.size());
    for (const Context& context : contexts) {
        sums.push_back(ArithmeticDecoder::Sums(context));
    }
    ArithmeticDecoder decoder(bits);
    const auto next = [&](std::uint32_t context) -> const ContextEntry& {
        return decoder.Next(contexts[context], sums[context]);
    };
    return SymbolValues(next, symbols, count, outside);
}

/// The second form's bit-length codec: all of one width, or runs whose width follows from the one before.
Values RunValues(WordBits& bits, std::size_t count)
{
    Values values;
    values.reserve(count);
    if (bits.Get(1) == 0) {
        const int leastBits = static_cast<int>(bits.Get(6));
        const int mostBits = static_cast<int>(bits.Get(6));
        if (leastBits > 32 || mostBits > 32) {
            throw Unreadable("packed values are damaged");
        }
        const std::int32_t least = bits.GetSigned(leastBits);
        const std::int32_t most = bits.GetSigned(mostBits);
        const int width = std::bit_width(static_cast<std::uint32_t>(Subtract(most, least)));
        for (std::size_t i = 0; i < count; ++i) {
            values.push_back(Add(static_cast<std::int32_t>(bits.Get(width)), least));
        }
        return values;
    }
    const std::int32_t mean = bits.GetSigned(32);
    const int stepBits = static_cast<int>(bits.Get(3));
    const int runBits = static_cast<int>(bits.Get(3));
    if (stepBits == 0 || runBits == 0) {
        throw Unreadable("packed values are damaged");
    }
    const std::int32_t lowest = -(1 << (stepBits - 1));
    const std::int32_t highest = (1 << (stepBits - 1)) - 1;
    int width = 0;
    while (values.size() < count) {
        std::int32_t step = 0;
        do {
            step = bits.GetSigned(stepBits);
            width += step;
        } while (step == lowest || step == highest);
        const std::size_t run = bits.Get(runBits);
        if (width < 0 || width > 32 || run > count - values.size()) {
            throw Unreadable("packed values are damaged");
        }
        for (std::size_t i = 0; i < run; ++i) {
            values.push_back(Add(bits.GetSigned(width), mean));
        }
    }
    return values;
}

Values SecondForm(Bytes& in, Budget& budget, int depth)
{
    const std::size_t count = CountOf(in.I32(), budget);
    if (count == 0) {
        return {};
    }
    const std::uint8_t codec = in.U8();
    if (depth > DeepestPacket) {
        throw Unreadable("a packed list of an unknown kind");
    }
    if (codec == Chopped) {
        const int chop = in.U8();
        if (chop == 0) {
            return SecondForm(in, budget, depth + 1);
        }
        const std::int32_t bias = in.I32();
        const int span = in.U8();
        Values high = SecondForm(in, budget, depth + 1);
        const Values low = SecondForm(in, budget, depth + 1);
        if (high.size() != count || low.size() != count || chop > span || span > 32) {
            throw Unreadable("packed values are damaged");
        }
        for (std::size_t i = 0; i < count; ++i) {
            const auto upper = static_cast<std::uint64_t>(static_cast<std::uint32_t>(high[i]));
            high[i] = Add(static_cast<std::int32_t>(static_cast<std::uint32_t>(upper << (span - chop)) |
                                                    static_cast<std::uint32_t>(low[i])),
                          bias);
        }
        return high;
    }
    if (codec != Plain && codec != BitLength && codec != Arithmetic) {
        throw Unreadable("a packed list of an unknown kind");
    }
    const std::int32_t length = in.I32(); // bits
    if (length < 0 || static_cast<std::size_t>(length) / 8 > in.Left()) {
        throw Unreadable("a count is larger than what follows it");
    }
    if (codec == Plain) {
        return PlainValues(in, count);
    }
    WordBits bits(in, (static_cast<std::size_t>(length) + 31) / 32);
    if (codec == BitLength) {
        return RunValues(bits, count);
    }
    const Context context = ReadContext(in);
    const Values outside = SecondForm(in, budget, depth + 1);
    const std::vector<std::uint32_t> sums = ArithmeticDecoder::Sums(context);
    ArithmeticDecoder decoder(bits);
    const auto next = [&](std::uint32_t) -> const ContextEntry& { return decoder.Next(context, sums); };
    return SymbolValues(next, count, count, outside);
}

/// NOTE: residuals begin with the fifth value.
void Unpredict(Values& values, Predictor predictor)
{
    for (std::size_t i = 4; i < values.size(); ++i) {
        const std::int32_t one = values[i - 1];
        const std::int32_t two = values[i - 2];
        std::int32_t expected = 0;
        switch (predictor) {
        case Predictor::None:
            return;
        case Predictor::Lag1:
            expected = one;
            break;
        case Predictor::Stride1:
            expected = Add(one, Subtract(one, two));
            break;
        case Predictor::StripIndex: {
            const std::int32_t step = Subtract(two, values[i - 4]);
            expected = Add(two, step > -8 && step < 8 ? step : 2);
            break;
        }
        }
        values[i] = Add(values[i], expected);
    }
}

} // namespace

std::vector<std::int32_t> ReadPacket(Bytes& in, Predictor predictor, Budget& budget)
{
    Values values = in.FileFormat().IsV8() ? FirstForm(in, budget, 0) : SecondForm(in, budget, 0);
    Unpredict(values, predictor);
    return values;
}

} // namespace cadex::jt
