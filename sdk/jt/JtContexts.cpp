#include "sdk/jt/JtContexts.h"

#include <algorithm>

namespace cadex::jt {

namespace {

constexpr std::size_t MostEntries = 1 << 20;
constexpr std::uint32_t MostOccurrences = 0xFFFF; ///< the arithmetic has 16 bits

void CheckEntryCount(std::size_t count, int bitsEach, const Bytes& in)
{
    if (count > MostEntries || count * static_cast<std::size_t>(bitsEach) / 8 > in.Left() + 8) {
        throw Unreadable("a table of symbols is larger than what follows it");
    }
}

std::int32_t Sum(std::uint32_t a, std::int32_t b)
{
    return static_cast<std::int32_t>(a + static_cast<std::uint32_t>(b));
}

std::int32_t SymbolOf(std::uint32_t stored)
{
    return static_cast<std::int32_t>(stored) - 2;
}

} // namespace

std::vector<Context> ReadContexts(Bytes& in)
{
    std::vector<Context> contexts(in.U8());
    if (contexts.empty()) {
        throw Unreadable("packed values have no table of symbols");
    }
    ByteBits bits(in);
    int valueBits = 0;
    std::int32_t least = 0;
    for (std::size_t i = 0; i < contexts.size(); ++i) {
        const std::size_t count = bits.Get(32);
        const int symbolBits = static_cast<int>(bits.Get(6));
        const int countBits = static_cast<int>(bits.Get(6));
        if (i == 0) {
            valueBits = static_cast<int>(bits.Get(6));
        }
        const int nextBits = static_cast<int>(bits.Get(6));
        if (i == 0) {
            least = static_cast<std::int32_t>(bits.Get(32));
        }
        if (symbolBits > 32 || countBits > 32 || valueBits > 32 || nextBits > 32) {
            throw Unreadable("a table of symbols makes no sense");
        }
        CheckEntryCount(count, std::max(1, symbolBits + countBits + nextBits), in);
        contexts[i].entries.resize(count);
        for (ContextEntry& entry : contexts[i].entries) {
            entry.symbol = SymbolOf(bits.Get(symbolBits));
            entry.count = bits.Get(countBits);
            if (i == 0) {
                entry.value = Sum(bits.Get(valueBits), least);
            } else {
                const auto& first = contexts.front().entries;
                const auto same = std::find_if(first.begin(), first.end(), [&](const ContextEntry& other) {
                    return other.symbol == entry.symbol;
                });
                entry.value = same == first.end() ? 0 : same->value;
            }
            entry.next = bits.Get(nextBits);
            if (entry.next >= contexts.size()) {
                throw Unreadable("a table of symbols leads to none");
            }
        }
    }
    return contexts;
}

Context ReadContext(Bytes& in)
{
    ByteBits bits(in);
    const std::size_t count = bits.Get(16);
    const int symbolBits = static_cast<int>(bits.Get(6));
    const int countBits = static_cast<int>(bits.Get(6));
    const int valueBits = static_cast<int>(bits.Get(6));
    const auto least = static_cast<std::int32_t>(bits.Get(32));
    if (symbolBits > 32 || countBits > 32 || valueBits > 32) {
        throw Unreadable("a table of symbols makes no sense");
    }
    CheckEntryCount(count, std::max(1, symbolBits + countBits + valueBits), in);
    Context context;
    context.entries.resize(count);
    for (ContextEntry& entry : context.entries) {
        entry.symbol = SymbolOf(bits.Get(symbolBits));
        entry.count = bits.Get(countBits);
        entry.value = Sum(bits.Get(valueBits), least);
    }
    return context;
}

std::vector<std::uint32_t> ArithmeticDecoder::Sums(const Context& context)
{
    std::vector<std::uint32_t> sums{0};
    sums.reserve(context.entries.size() + 1);
    for (const ContextEntry& entry : context.entries) {
        if (entry.count > MostOccurrences || sums.back() + entry.count > MostOccurrences) {
            throw Unreadable("a table of symbols makes no sense");
        }
        sums.push_back(sums.back() + entry.count);
    }
    if (sums.back() == 0) {
        throw Unreadable("a table of symbols is empty");
    }
    return sums;
}

const ContextEntry& ArithmeticDecoder::Next(const Context& context, const std::vector<std::uint32_t>& sums)
{
    const std::uint32_t total = sums.back();
    const std::uint32_t range = myHigh - myLow + 1;
    const std::uint32_t place = ((myCode - myLow + 1) * total - 1) / range;
    const auto above = std::upper_bound(sums.begin(), sums.end(), place);
    if (above == sums.end() || above == sums.begin()) {
        throw Unreadable("packed values are damaged");
    }
    const auto index = static_cast<std::size_t>(above - sums.begin()) - 1;
    myHigh = myLow + range * sums[index + 1] / total - 1;
    myLow = myLow + range * sums[index] / total;
    for (;;) {
        if (((myHigh ^ myLow) & 0x8000) != 0) {
            if ((myLow & 0x4000) == 0 || (myHigh & 0x4000) != 0) {
                break;
            }
            myCode ^= 0x4000; // the ends meet around the middle
            myLow &= 0x3FFF;
            myHigh |= 0x4000;
        }
        myLow = (myLow << 1) & 0xFFFF;
        myHigh = ((myHigh << 1) | 1) & 0xFFFF;
        myCode = ((myCode << 1) | myBits.GetOrZero(1)) & 0xFFFF;
    }
    return context.entries[index];
}

HuffmanTree::HuffmanTree(const Context& context) : myHeap{-1}
{
    if (context.entries.empty()) {
        throw Unreadable("a table of symbols is empty");
    }
    myNodes.reserve(2 * context.entries.size());
    for (const ContextEntry& entry : context.entries) {
        myNodes.push_back({entry.count, -1, -1, &entry});
        Push(static_cast<int>(myNodes.size()) - 1);
    }
    while (myHeap.size() > 2) {
        const int left = Pop();
        const int right = Pop();
        const std::uint64_t weight =
            myNodes[static_cast<std::size_t>(left)].weight + myNodes[static_cast<std::size_t>(right)].weight;
        myNodes.push_back({weight, left, right, nullptr});
        Push(static_cast<int>(myNodes.size()) - 1);
    }
}

void HuffmanTree::Push(int node)
{
    const auto weightAt = [&](std::size_t place) {
        return myNodes[static_cast<std::size_t>(myHeap[place])].weight;
    };
    myHeap.push_back(node);
    std::size_t place = myHeap.size() - 1;
    const std::uint64_t weight = myNodes[static_cast<std::size_t>(node)].weight;
    for (; place > 1 && weightAt(place / 2) > weight; place /= 2) {
        myHeap[place] = myHeap[place / 2];
    }
    myHeap[place] = node;
}

int HuffmanTree::Pop()
{
    const auto weightAt = [&](std::size_t place) {
        return myNodes[static_cast<std::size_t>(myHeap[place])].weight;
    };
    const int top = myHeap[1];
    const int last = myHeap.back();
    myHeap.pop_back();
    const std::size_t count = myHeap.size() - 1;
    if (count == 0) {
        return top;
    }
    std::size_t place = 1;
    for (std::size_t child = 2; child <= count; child = 2 * place) {
        if (child < count && weightAt(child + 1) < weightAt(child)) {
            ++child;
        }
        if (myNodes[static_cast<std::size_t>(last)].weight < weightAt(child)) {
            break;
        }
        myHeap[place] = myHeap[child];
        place = child;
    }
    myHeap[place] = last;
    return top;
}

const ContextEntry& HuffmanTree::Next(WordBits& bits) const
{
    const Node* node = &myNodes.back();
    while (node->entry == nullptr) {
        node = &myNodes[static_cast<std::size_t>(bits.Get(1) != 0 ? node->left : node->right)];
    }
    return *node->entry;
}

} // namespace cadex::jt
