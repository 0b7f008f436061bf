// The reference host's strings, and the merging of identical vertices.
#include "fuzz/Target.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <memory>
#include <utility>

#include "common/encoding/CZemtarConvert.h"
#include "common/file/CZemtarFile.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMesh.h"
#include "host/CZemtarPolygonsTable.h"
#include "host/CZemtarString.h"
#include "host/CZemtarTextureCoordinatesTable.h"
#include "host/CZemtarVerticiesNormalsTable.h"
#include "host/CZemtarVerticiesTable.h"

namespace Zemtar::Fuzz {
namespace {

/// A series of edits, each a byte and what it needs.
void RunStrings(const Target&, std::string_view bytes)
{
    Feed feed(bytes);
    const auto text = [&feed] {
        std::string letters(feed.Bytes(feed.Below(24)));
        std::replace(letters.begin(), letters.end(), '\0', '/'); // a zero ends a host string on its way to Qt
        return CZemtarString(letters);
    };
    CZemtarString string = text();
    while (!feed.IsOver() && string.Length() < 100'000) {
        const int number = static_cast<int>(feed.Below(64)) - 16;
        switch (feed.Below(16)) {
        case 0:
            string += text();
            break;
        case 1:
            string.Replace(text(), text());
            break;
        case 2:
            string.TruncateAfter(number);
            break;
        case 3:
            string.Trim().ToLower();
            break;
        case 4:
            string.RemoveExt();
            Require(!string.Extension().Contains(L".", true), "an extension has no dot");
            break;
        case 5:
            string.RemovePath();
            break;
        case 6:
            string.SetPath(text(), L'/');
            break;
        case 7:
            string.ReplaceExtension(text());
            break;
        case 8:
            string.CD(text());
            break;
        case 9: {
            const CZemtarString part = text();
            const int at = string.Find(part);
            Require((at >= 0) == string.Contains(part, true), "what is found is contained");
            break;
        }
        case 10:
            string = string.Path(L'/') + string.Extension() + CZemtarString(number);
            break;
        case 11:
            string.ReplaceSlashWithSystemSlash();
            break;
        case 12:
            string = CZemtarFile::FixShortFileName(string, text());
            break;
        case 13:
            string = CZemtarFile::AddExtensinoToFile(string, text());
            break;
        case 14:
            string = CZemtarFile::FixFileNameSlashes(string, false);
            break;
        default:
            (void)std::as_const(string)[number];
            string.IsEqualTo(text(), false);
        }
        // Narrow and back: what is Unicode stays.
        const std::string narrow = string.toStdString();
        Require(CZemtarString(narrow).toStdString() == narrow, "narrow text comes back as it went");
        const CZemtarString back =
            CZemtarConvert::QStringToCZemtarString(CZemtarConvert::CZemtarStringToQString(string));
        Require(back.toStdString() == narrow, "a text that went through Qt is the same");
    }
}

std::vector<std::string> StringSeeds(const Target&)
{
    return {std::string("\x0A/a/b.c\xC3\xA9", 9) + "\x10\x04\x10\x06\x03/x/\x20\x08\x05../yz",
            "\x05"
            "a.b.c\x10\x07\x04.obj\x10\x01\x01"
            "a\x03\xF0\x9F\x98\x80\x14\x02",
            "\x04\xFF\xFE\xED\xA0\x10\x0D\x07(*.OBJ)\x10\x0C\x01_\x10\x0E"};
}

/// Few different values, so that there is something to merge; a plain map says what must come of it.
void RunMerge(const Target&, std::string_view bytes)
{
    static constexpr std::array<double, 8> Values = {0.0, -0.0, 1.0, 1.0 + 1e-15, 1e308, -1e-308, 0.5, 3.0};
    Feed feed(bytes);
    const std::unique_ptr<CZemtarDocument> document(CZemtarDocument::Create(true));
    auto* vertices = CZemtarVerticiesTable::Create(document.get(), true);
    auto* normals = CZemtarVerticiesNormalsTable::Create(document.get(), true);
    auto* coordinates = CZemtarTextureCoordinatesTable::Create(document.get(), true);
    auto* polygons = CZemtarPolygonsTable::Create(document.get());
    const unsigned what = feed.Byte();
    const bool hasNormals = (what & 1U) != 0;
    const bool hasCoordinates = (what & 2U) != 0;
    const bool positionsOnly = (what & 4U) != 0;
    const auto value = [](unsigned bits) { return Values[bits & 7U]; };
    std::vector<std::array<double, 8>> given;
    for (const unsigned count = feed.Byte() * 8U + 3U; given.size() < count;) {
        const unsigned a = feed.Byte();
        const unsigned b = feed.IsOver() ? static_cast<unsigned>(given.size()) % 5U : feed.Byte();
        vertices->Append(value(a), value(a >> 3U), value(b));
        normals->Append(value(b >> 3U), value(a >> 5U), 1.0);
        coordinates->Append(value(b >> 5U), 0.25);
        given.push_back({value(a), value(a >> 3U), value(b)});
        if (hasNormals && !positionsOnly) {
            given.back()[3] = value(b >> 3U);
            given.back()[4] = value(a >> 5U);
        }
        if (hasCoordinates && !positionsOnly) {
            given.back()[5] = value(b >> 5U);
        }
    }
    const auto index = [&] {
        return (feed.Byte() * 256U + feed.Byte()) % static_cast<unsigned>(given.size());
    };
    std::vector<std::array<unsigned, 3>> corners;
    while (corners.size() < 3 || (!feed.IsOver() && corners.size() < 5000)) {
        corners.push_back({index(), index(), index()});
        polygons->Append(corners.back()[0], corners.back()[1], corners.back()[2]);
    }
    CZemtarMesh::CombineIdenticalVerticesInPlace(vertices, hasNormals ? normals : nullptr, polygons,
                                                 hasCoordinates ? coordinates : nullptr, positionsOnly,
                                                 nullptr);
    std::map<std::array<double, 8>, unsigned> kept; // 0.0 and -0.0 are one key
    std::vector<unsigned> place;
    place.reserve(given.size());
    for (const auto& vertex : given) {
        place.push_back(kept.try_emplace(vertex, static_cast<unsigned>(kept.size())).first->second);
    }
    Require(vertices->Count() == kept.size(), "each different vertex stays once");
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const auto polygon = polygons->Item(static_cast<unsigned>(i));
        for (unsigned k = 0; k < 3; ++k) {
            Require(polygon.VertexIndex(k) == place[corners[i][k]],
                    "polygons point to the vertex that stayed");
        }
    }
}

std::vector<std::string> MergeSeeds(const Target&)
{
    std::string seed("\x03\x04", 2);
    for (int i = 0; i < 300; ++i) {
        seed += static_cast<char>(i * 37);
    }
    return {seed, "\x07" + seed.substr(1), std::string("\0\xFF", 2) + seed};
}

} // namespace

std::vector<Target> HostTargets()
{
    return {{"strings", RunStrings, StringSeeds}, {"merge", RunMerge, MergeSeeds}};
}

} // namespace Zemtar::Fuzz
