// The statistics with which a packed list of integers was coded, and the two codecs that use them.
#pragma once

#include <cstdint>
#include <vector>

#include "sdk/jt/JtBits.h"

namespace cadex::jt {

/// The symbol of a value that is in no table: it stands in a list of its own.
inline constexpr std::int32_t EscapeSymbol = -2;

struct ContextEntry
{
    std::int32_t symbol = 0;
    std::uint32_t count = 0; ///< how often it occurs
    std::int32_t value = 0;
    std::uint32_t next = 0; ///< context of the symbol after it
};

struct Context
{
    std::vector<ContextEntry> entries;
    std::uint32_t total = 0;
};

/// Of the first form: one context or more.
std::vector<Context> ReadContexts(Bytes& in);
/// Of the second form: one context.
Context ReadContext(Bytes& in);

/// NOTE: I. Witten, R. Neal, J. Cleary, "Arithmetic Coding for Data Compression", 1987, with 16 bits.
class ArithmeticDecoder
{
public:
    explicit ArithmeticDecoder(WordBits& bits) : myBits(bits), myCode(bits.GetOrZero(16)) {}

    /// The entries must have been prepared by Sums().
    const ContextEntry& Next(const Context& context, const std::vector<std::uint32_t>& sums);

    /// Sums of the counts before each entry, and of all.
    static std::vector<std::uint32_t> Sums(const Context& context);

private:
    WordBits& myBits;
    std::uint32_t myLow = 0;
    std::uint32_t myHigh = 0xFFFF;
    std::uint32_t myCode;
};

/// NOTE: the tree must be built as the file's writer built it, since only the counts are stored: a binary
/// heap of the nodes in the order of the table; the lightest two become the left (1) and right (0) branch of
/// a new node.
class HuffmanTree
{
public:
    explicit HuffmanTree(const Context& context);

    const ContextEntry& Next(WordBits& bits) const;

private:
    struct Node
    {
        std::uint64_t weight = 0;
        int left = -1;
        int right = -1;
        const ContextEntry* entry = nullptr;
    };
    void Push(int node);
    int Pop();

    std::vector<Node> myNodes;
    std::vector<int> myHeap; ///< of nodes, from 1 on
};

} // namespace cadex::jt
