// Packed lists of integers: every codec of both forms, in both orders of bytes, and the predictors.
#include "tests/sdk/jt/JtCoding.h"

#include <random>

#include <gtest/gtest.h>

#include "sdk/jt/JtPackets.h"

namespace jttest {
namespace {

using namespace cadex;

std::vector<Values> Lists()
{
    std::mt19937 random(14);
    std::vector<Values> lists = {{0}, {-1}, {5, 5, 5, 5, 5, 5}, {0, 1, -1, 2, -2, 3, -3, 100, -100, 7, 7, 7}};
    for (const int spread : {1, 3, 40, 3000, 400000}) {
        std::normal_distribution<double> numbers(spread / 3., spread);
        Values& list = lists.emplace_back();
        for (int i = 0; i < 500; ++i) {
            list.push_back(static_cast<std::int32_t>(numbers(random)));
        }
    }
    return lists;
}

TEST(JtPackets, EveryCodecGivesBackWhatWasCoded)
{
    for (const int version : {80, 95}) {
        for (const bool isBigEndian : {false, true}) {
            for (const Coding coding :
                 {Coding::Plain, Coding::BitLength, Coding::Runs, Coding::Arithmetic, Coding::Chopped}) {
                if (version == 80 && (coding == Coding::Runs || coding == Coding::Chopped)) {
                    continue;
                }
                for (const Values& list : Lists()) {
                    Composer out({version, isBigEndian});
                    PutPacket(out, list, coding);
                    out.U8(99);
                    jt::Bytes in(out.bytes, out.FileFormat());
                    jt::Budget budget(100000);
                    EXPECT_EQ(jt::ReadPacket(in, jt::Predictor::None, budget), list)
                        << version << " " << static_cast<int>(coding);
                    EXPECT_EQ(in.Left(), 1U); // all of it, and no more
                }
            }
        }
    }
}

/// Counts of 8, 4, 2 and 1 have the codes 0, 10, 110 and 111; the lightest is the escape.
TEST(JtPackets, HuffmanCodesFollowFromTheCounts)
{
    Composer out({81, false});
    BitWriter table;
    table.Put(4, 32);
    for (const std::uint32_t width : {3U, 4U, 8U, 0U}) {
        table.Put(width, 6);
    }
    table.Put(static_cast<std::uint32_t>(-50), 32);
    for (const auto& [symbol, count, value] :
         {std::array<std::uint32_t, 3>{3, 8, 50}, {4, 4, 57}, {5, 2, 43}, {0, 1, 0}}) {
        table.Put(symbol, 3);
        table.Put(count, 4);
        table.Put(value, 8);
    }
    out.U8(2).U8(1);
    out.bytes += table.Octets();
    out.I32(1);
    PutFirstForm(out, {123456}, Coding::Plain);
    BitWriter bits;
    bits.Put(0b0101101110100, 13);
    out.I32(13).I32(7).I32(1);
    PutWords(out, bits);
    jt::Bytes in(out.bytes, out.FileFormat());
    jt::Budget budget(1000);
    EXPECT_EQ(jt::ReadPacket(in, jt::Predictor::None, budget), (Values{0, 7, -7, 123456, 0, 7, 0}));
}

/// In the second of two contexts an escape only leads back to the first.
TEST(JtPackets, ContextsLeadFromOneToTheOther)
{
    Composer out({80, false});
    BitWriter table;
    const auto begin = [&](std::uint32_t entries, bool isFirst) {
        table.Put(entries, 32);
        table.Put(4, 6);
        table.Put(4, 6);
        if (isFirst) {
            table.Put(8, 6);
        }
        table.Put(1, 6);
        if (isFirst) {
            table.Put(0, 32);
        }
    };
    begin(2, true); // 10 stays here, 20 leads to the other
    for (const auto& [symbol, value, next] : {std::array<std::uint32_t, 3>{3, 10, 0}, {4, 20, 1}}) {
        table.Put(symbol, 4);
        table.Put(1, 4);
        table.Put(value, 8);
        table.Put(next, 1);
    }
    begin(2, false); // 20 stays there, the escape leads back
    for (const auto& [symbol, next] : {std::array<std::uint32_t, 2>{4, 1}, {0, 0}}) {
        table.Put(symbol, 4);
        table.Put(1, 4);
        table.Put(next, 1);
    }
    out.U8(3).U8(2);
    out.bytes += table.Octets();
    out.I32(0);
    BitWriter bits;
    ArithmeticCoder coder(bits);
    const int halves[] = {0, 1, 0, 0, 1, 0}; // 10 20 | 20 20 back | 10
    for (const int half : halves) {
        coder.Put(static_cast<std::uint32_t>(half), static_cast<std::uint32_t>(half) + 1, 2);
    }
    coder.Finish();
    out.I32(static_cast<std::int32_t>(bits.bits.size())).I32(5).I32(6);
    out.I32(static_cast<std::int32_t>(bits.Words().size()));
    PutWords(out, bits);
    jt::Bytes in(out.bytes, out.FileFormat());
    jt::Budget budget(1000);
    EXPECT_EQ(jt::ReadPacket(in, jt::Predictor::None, budget), (Values{10, 20, 20, 20, 10}));
}

TEST(JtPackets, PredictorsBeginWithTheFifthValue)
{
    const std::pair<jt::Predictor, Values> cases[] = {
        {jt::Predictor::None, {1, 2, 4, 8, 1, 1, 1}},
        {jt::Predictor::Lag1, {1, 2, 4, 8, 9, 10, 11}},
        {jt::Predictor::Stride1, {1, 2, 4, 8, 13, 19, 26}},
        {jt::Predictor::StripIndex, {1, 2, 4, 8, 8, 15, 13}}, // 4 + 3, 8 + 6, 8 + 4, and 1 each
    };
    for (const auto& [predictor, expected] : cases) {
        Composer out({80, false});
        PutFirstForm(out, {1, 2, 4, 8, 1, 1, 1}, Coding::Plain);
        jt::Bytes in(out.bytes, out.FileFormat());
        jt::Budget budget(100);
        EXPECT_EQ(jt::ReadPacket(in, predictor, budget), expected);
    }
}

/// Lists of which a few bytes make gigabytes, packets within packets, codes that end too early.
TEST(JtPackets, WhatIsTooMuchIsRefused)
{
    const auto expectRefused = [](const Composer& out) {
        jt::Bytes in(out.bytes, out.FileFormat());
        jt::Budget budget(1'000'000);
        EXPECT_THROW(jt::ReadPacket(in, jt::Predictor::None, budget), jt::Unreadable);
    };
    Composer equal({95, false}); // two thousand million equal values of no bits
    equal.I32(2'000'000'000).U8(1).I32(32).U32(0x02000000);
    expectRefused(equal);
    Composer negative({95, false});
    negative.I32(-5).U8(1).I32(32).U32(0);
    expectRefused(negative);
    Composer nested({95, false});
    for (int i = 0; i < 1000; ++i) {
        nested.I32(5).U8(4).U8(0);
    }
    expectRefused(nested);
    Composer deep({80, false});
    for (int i = 0; i < 1000; ++i) {
        deep.U8(3).U8(1);
        deep.bytes += std::string(11, '\0');
        deep.I32(1);
    }
    expectRefused(deep);
    for (const int version : {80, 95}) {
        for (const Coding coding : {Coding::BitLength, Coding::Arithmetic}) {
            Composer whole({version, false});
            PutPacket(whole, Lists().back(), coding);
            for (std::size_t size = 0; size < whole.bytes.size(); size += 7) {
                Composer cut({version, false});
                cut.bytes = whole.bytes.substr(0, size);
                expectRefused(cut);
            }
        }
    }
}

} // namespace
} // namespace jttest
