// Files in memory: read by the reader of a format, whole or damaged in hundreds of ways.
//
//     ExpectDamagedFilesEndWell<ACIS_Reader>({good, another}, 200, 30);
#pragma once

#include <chrono>
#include <cstring>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/ModelAlgo_BRepMesherParameters.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/internal/Reports.hxx>

namespace cadex::test {

/// Nothing when the file is refused. Bodies are not meshed.
template <typename Reader>
std::optional<ModelData_Model> ReadBytes(const std::string& bytes)
{
    Reader reader;
    std::istringstream stream(bytes);
    ModelData_Model model;
    if (!reader.ReadFile(stream) || !reader.Transfer(model)) {
        return std::nullopt;
    }
    return model;
}

inline void MeshBodies(const ModelData_Model& model)
{
    const ModelAlgo_BRepMesherParameters parameters(ModelAlgo_BRepMesherParameters::Fine, true);
    ModelAlgo_BRepMesher(parameters).Compute(model, true);
}

/// The first report since the last call; empty without one.
inline std::string TakeReason()
{
    const std::vector<internal::Report> reports = internal::Reports::Take();
    return reports.empty() ? "" : reports.front().text;
}

/// A copy whose bytes from a place on are others.
inline std::string Overwritten(std::string bytes, std::size_t at, const std::string& by)
{
    return bytes.replace(at, by.size(), by);
}

/// A copy in which the first place where `from` stands has `to`.
inline std::string Replaced(std::string bytes, const std::string& from, const std::string& to)
{
    return bytes.replace(bytes.find(from), from.size(), to);
}

/// A file that is refused, and a part of the reason that is given.
struct Refusal
{
    const char* damage;
    std::string bytes;
    const char* reason;
};

template <typename Reader>
void ExpectRefusals(const std::vector<Refusal>& files)
{
    for (const auto& [damage, bytes, reason] : files) {
        internal::Reports::Clear();
        EXPECT_FALSE(ReadBytes<Reader>(bytes)) << damage;
        const std::string why = TakeReason();
        EXPECT_NE(why, "") << damage;
        EXPECT_NE(why.find(reason), std::string::npos) << damage << ": " << why;
    }
}

/// A copy that is damaged behind its first bytes: a bit flipped, a piece cut out, zeroed, doubled or
/// replaced by the largest numbers, the end cut off, a number of a text raised. Equal seeds give equal
/// damage.
inline std::string Damaged(std::string bytes, unsigned kind, std::mt19937& random)
{
    constexpr std::size_t Head = 16;
    const auto pick = [&](std::size_t end) {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
    };
    const std::size_t at = Head + pick(bytes.size() - 2 * Head);
    switch (kind % 7) {
    case 0:
        bytes[at] = static_cast<char>(bytes[at] ^ (1 << pick(8)));
        break;
    case 1:
        bytes.erase(at, 1 + pick(16));
        break;
    case 2:
        std::memset(&bytes[at], 0, Head);
        break;
    case 3:
        bytes.insert(at, bytes.substr(at, 1 + pick(64)));
        break;
    case 4:
        std::memcpy(&bytes[at], "\xFF\xFF\xFF\x7F", 4);
        break;
    case 5:
        bytes.resize(at);
        break;
    default:
        bytes.replace(bytes.find(' ', at) + 1, 1, "9999999");
        break;
    }
    return bytes;
}

/// Each file is read and what comes of it meshed, since what no checksum covers must not hurt either;
/// whatever comes of it comes soon, and a refusal has its reason. At least so many are refused.
template <typename Reader>
void ExpectDamagedFilesEndWell(const std::vector<std::string>& seeds, unsigned count, unsigned leastRefused)
{
    std::mt19937 random(20261121);
    unsigned refused = 0;
    const auto start = std::chrono::steady_clock::now();
    for (unsigned i = 0; i < count; ++i) {
        const std::string bytes =
            Damaged(seeds[i % seeds.size()], i / static_cast<unsigned>(seeds.size()), random);
        internal::Reports::Clear();
        if (const auto model = ReadBytes<Reader>(bytes)) {
            MeshBodies(*model);
        } else {
            ++refused;
            EXPECT_NE(TakeReason(), "") << i;
        }
    }
    EXPECT_GE(refused, leastRefused);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

} // namespace cadex::test
