// Packed lists of integers: the codecs of shape segments and the predictors on top of them.
//
//     std::vector<std::int32_t> strips = ReadPacket(in, Predictor::Stride1, budget);
//
// NOTE: JT File Format Reference, "Int32 Compressed Data Packet" and, for files from version 9 on, its second
// form ("Mk. 2"): values as they stand, with a varying number of bits, Huffman-coded (first form alone),
// coded arithmetically, or in two halves (second form alone).
#pragma once

#include <cstdint>
#include <vector>

#include "sdk/jt/JtBytes.h"

namespace cadex::jt {

/// How a value of a list follows from those before it; the first four stand as they are.
enum class Predictor
{
    None,
    Lag1,       ///< the value before
    Stride1,    ///< on the line through the two before
    StripIndex, ///< two before, going on as there by less than 8, else by 2
};

/// Reads a list in the form of the file's version.
std::vector<std::int32_t> ReadPacket(Bytes& in, Predictor predictor, Budget& budget);

} // namespace cadex::jt
