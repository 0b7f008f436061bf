#include "sdk/jt/JtVertices.h"

#include <array>
#include <bit>
#include <cmath>

namespace cadex::jt {

namespace {

using Codes = std::vector<std::int32_t>;

/// Bits of the mask that says what a vertex has.
namespace binding {
constexpr std::uint64_t Coordinates = 0x7;
constexpr std::uint64_t Normals = 0x8;
constexpr std::uint64_t Colours = 0x30;
constexpr std::uint64_t Uvs = 0xF00; ///< of the first texture
} // namespace binding

void Check(bool isSound)
{
    if (!isSound) {
        throw Unreadable("the vertices of a shape are damaged");
    }
}

/// Tables of a normal's angles, 2^8 steps.
struct Angles
{
    static constexpr int Bits = 8;
    static constexpr std::size_t Count = (1 << Bits) + 1;
    std::array<float, Count> cosTheta{};
    std::array<float, Count> sinTheta{};
    std::array<float, Count> cosPsi{};
    std::array<float, Count> sinPsi{};

    Angles()
    {
        constexpr double MaxPsi = 0.615479709;
        for (std::size_t i = 0; i < Count; ++i) {
            const double part = static_cast<double>(i) / (1 << Bits);
            const double theta = std::asin(std::tan(MaxPsi * (1 - part)));
            const double psi = MaxPsi * part;
            cosTheta[i] = static_cast<float>(std::cos(theta));
            sinTheta[i] = static_cast<float>(std::sin(theta));
            cosPsi[i] = static_cast<float>(std::cos(psi));
            sinPsi[i] = static_cast<float>(std::sin(psi));
        }
    }
};

/// Exponent and mantissa of floats, each as a list.
std::vector<float> ReadExactFloats(Bytes& in, Predictor predictor, std::size_t count, Budget& budget)
{
    const Codes exponents = ReadPacket(in, predictor, budget);
    const Codes mantissas = ReadPacket(in, predictor, budget);
    Check(exponents.size() == count && mantissas.size() == count);
    std::vector<float> values(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t sign = static_cast<std::uint32_t>(exponents[i]) << 23;
        values[i] = std::bit_cast<float>(sign | (static_cast<std::uint32_t>(mantissas[i]) & 0x7FFFFF));
        Check(std::isfinite(values[i]));
    }
    return values;
}

/// Four lists of normals' codes.
std::vector<ModelData_Vectorf> ReadNormalCodes(Bytes& in, std::size_t count, int bits, Budget& budget)
{
    // predicted in version 8 alone
    const Predictor predictor = in.FileFormat().IsV8() ? Predictor::Lag1 : Predictor::None;
    const Codes sextants = ReadPacket(in, predictor, budget);
    const Codes octants = ReadPacket(in, predictor, budget);
    const Codes thetas = ReadPacket(in, predictor, budget);
    const Codes psis = ReadPacket(in, predictor, budget);
    Check(sextants.size() == count && octants.size() == count && thetas.size() == count &&
          psis.size() == count);
    std::vector<ModelData_Vectorf> normals;
    normals.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        normals.push_back(NormalOf(sextants[i], octants[i], thetas[i], psis[i], bits));
    }
    return normals;
}

std::size_t CountOf(Bytes& in)
{
    const std::int32_t count = in.I32();
    Check(count >= 0);
    return static_cast<std::size_t>(count);
}

std::vector<ModelData_Point> PointsOf(const std::vector<std::vector<double>>& columns, std::size_t count)
{
    std::vector<ModelData_Point> points;
    points.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        points.emplace_back(columns[0][i], columns[1][i], columns.size() > 2 ? columns[2][i] : 0);
    }
    return points;
}

/// Columns of quantised or exact numbers.
std::vector<std::vector<double>> ReadColumns(Bytes& in, const std::vector<Quantiser>& quantisers,
                                             std::size_t count, Budget& budget)
{
    std::vector<std::vector<double>> columns;
    for (const Quantiser& quantiser : quantisers) {
        std::vector<double>& column = columns.emplace_back();
        if (quantiser.Bits() == 0) {
            const std::vector<float> values = ReadExactFloats(in, Predictor::Lag1, count, budget);
            column.assign(values.begin(), values.end());
            continue;
        }
        const Codes codes = ReadPacket(in, Predictor::Lag1, budget);
        Check(codes.size() == count);
        column.reserve(count);
        for (const std::int32_t code : codes) {
            Check(quantiser.Has(code));
            column.push_back(quantiser.Value(code));
        }
    }
    return columns;
}

std::vector<Quantiser> ReadQuantisers(Bytes& in, std::size_t count)
{
    std::vector<Quantiser> quantisers;
    for (std::size_t i = 0; i < count; ++i) {
        quantisers.emplace_back(in);
    }
    return quantisers;
}

void ReadPoints(Bytes& in, VertexTable& table, Budget& budget)
{
    const std::size_t count = CountOf(in);
    const std::size_t components = in.U8();
    Check(components == 2 || components == 3);
    const std::vector<Quantiser> quantisers = ReadQuantisers(in, components);
    table.points = PointsOf(ReadColumns(in, quantisers, count, budget), count);
    in.U32(); // checksum
}

void ReadNormals(Bytes& in, VertexTable& table, Budget& budget)
{
    const std::size_t count = CountOf(in);
    const std::size_t components = in.U8();
    const int bits = in.U8();
    if (bits != 0) {
        table.normals = ReadNormalCodes(in, count, bits, budget);
    } else {
        Check(components == 3);
        std::array<std::vector<float>, 3> columns;
        for (std::vector<float>& column : columns) {
            column = ReadExactFloats(in, Predictor::None, count, budget);
        }
        table.normals.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            table.normals.emplace_back(columns[0][i], columns[1][i], columns[2][i]);
        }
    }
    in.U32(); // checksum
}

/// Colours of single vertices are not shown, but stand before what is.
void SkipColours(Bytes& in, Budget& budget)
{
    const std::size_t count = CountOf(in);
    const std::size_t components = in.U8();
    const int bits = in.U8();
    Check(components == 3 || components == 4);
    if (bits == 0) {
        for (std::size_t i = 0; i < components; ++i) {
            ReadExactFloats(in, Predictor::Lag1, count, budget);
        }
    } else {
        ReadQuantisers(in, 4);
        for (std::size_t i = 0; i < 4; ++i) {
            ReadPacket(in, Predictor::Lag1, budget);
        }
    }
    in.U32(); // checksum
}

void ReadUvs(Bytes& in, VertexTable& table, Budget& budget)
{
    const std::size_t count = CountOf(in);
    const std::size_t components = in.U8();
    const int bits = in.U8();
    Check(components >= 1 && components <= 4);
    std::vector<std::vector<double>> columns;
    if (bits != 0) {
        const std::vector<Quantiser> quantisers = ReadQuantisers(in, components);
        columns = ReadColumns(in, quantisers, count, budget);
    } else {
        for (std::size_t i = 0; i < components; ++i) {
            const std::vector<float> values = ReadExactFloats(in, Predictor::Lag1, count, budget);
            columns.emplace_back(values.begin(), values.end());
        }
    }
    in.U32(); // checksum
    table.uvs.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        table.uvs.emplace_back(columns[0][i], columns.size() > 1 ? columns[1][i] : 0);
    }
}

} // namespace

Quantiser::Quantiser(Bytes& in)
{
    myLeast = in.F32();
    const double most = in.F32();
    myBits = in.U8();
    Check(myBits <= 32 && std::isfinite(myLeast) && std::isfinite(most));
    if (myBits > 0) {
        myStep = (most - myLeast) / static_cast<double>((std::uint64_t{1} << myBits) - 1);
    }
}

ModelData_Vectorf NormalOf(std::int32_t sextant, std::int32_t octant, std::int32_t theta, std::int32_t psi,
                           int bits)
{
    static const Angles angles;
    Check(bits > 0 && bits <= Angles::Bits);
    const int shift = Angles::Bits - bits;
    const std::int64_t thetaStep = (static_cast<std::int64_t>(theta) + (sextant & 1)) << shift;
    const std::int64_t psiStep = static_cast<std::int64_t>(psi) << shift;
    Check(thetaStep >= 0 && thetaStep < static_cast<std::int64_t>(Angles::Count) && psiStep >= 0 &&
          psiStep < static_cast<std::int64_t>(Angles::Count));
    const auto t = static_cast<std::size_t>(thetaStep);
    const auto p = static_cast<std::size_t>(psiStep);
    const float a = angles.cosTheta[t] * angles.cosPsi[p];
    const float b = angles.sinPsi[p];
    const float c = angles.sinTheta[t] * angles.cosPsi[p];
    float x = a;
    float y = b;
    float z = c;
    switch (sextant) {
    case 0:
        break;
    case 1:
        x = c;
        z = a;
        break;
    case 2:
        x = b;
        y = c;
        z = a;
        break;
    case 3:
        x = b;
        y = a;
        break;
    case 4:
        x = c;
        y = a;
        z = b;
        break;
    case 5:
        y = c;
        z = b;
        break;
    default:
        Check(false);
    }
    return {(octant & 4) != 0 ? x : -x, (octant & 2) != 0 ? y : -y, (octant & 1) != 0 ? z : -z};
}

VertexTable ReadQuantisedVertices(Bytes& in, bool hasNormals, bool hasUvs, bool hasColours, Budget& budget)
{
    VertexTable table;
    table.hasColours = hasColours;
    const std::vector<Quantiser> quantisers = ReadQuantisers(in, 3);
    const std::size_t count = CountOf(in);
    table.points = PointsOf(ReadColumns(in, quantisers, count, budget), count);
    if (hasNormals) {
        const int bits = in.U8();
        const std::size_t normals = CountOf(in);
        table.normals = ReadNormalCodes(in, normals, bits, budget);
        Check(normals == count);
    }
    if (hasUvs) {
        const std::vector<Quantiser> uvQuantisers = ReadQuantisers(in, 2);
        const std::size_t uvs = CountOf(in);
        Check(uvs == count);
        const std::vector<std::vector<double>> columns = ReadColumns(in, uvQuantisers, uvs, budget);
        table.uvs.reserve(uvs);
        for (std::size_t i = 0; i < uvs; ++i) {
            table.uvs.emplace_back(columns[0][i], columns[1][i]);
        }
    }
    if (hasColours) {
        const bool isHsv = in.U8() != 0;
        if (isHsv) {
            in.Skip(4);
        } else {
            ReadQuantisers(in, 4);
        }
        CountOf(in);
        for (int i = 0; i < 4; ++i) {
            ReadPacket(in, Predictor::Lag1, budget);
        }
    }
    return table;
}

VertexTable ReadVertexRecords(Bytes& in, Budget& budget)
{
    VertexTable table;
    const std::uint64_t bindings = in.U64();
    in.Skip(4); // bits of each kind, which stand with their data, too
    if (CountOf(in) == 0) {
        return table;
    }
    CountOf(in); // of attributes
    if ((bindings & binding::Coordinates) != 0) {
        ReadPoints(in, table, budget);
    }
    if ((bindings & binding::Normals) != 0) {
        ReadNormals(in, table, budget);
    }
    if ((bindings & binding::Colours) != 0) {
        SkipColours(in, budget);
        table.hasColours = true;
    }
    if ((bindings & binding::Uvs) != 0) {
        ReadUvs(in, table, budget);
    }
    return table;
}

} // namespace cadex::jt
