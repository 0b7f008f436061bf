// The layer rules: which room may include what. Reads every include line of the source tree.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

/// What an include line leads to.
enum Kind : unsigned
{
    Std = 1u << 0,
    Qt = 1u << 1,
    Occt = 1u << 2,
    Ifcpp = 1u << 3,
    FreeImageLib = 1u << 4,
    Uchardet = 1u << 5,
    Host = 1u << 6,
    HostReference = 1u << 7,
    SdkInterface = 1u << 8,
    SdkModel = 1u << 9,
    SdkPart21 = 1u << 10,
    SdkOcct = 1u << 11,
    SdkIfc = 1u << 12,
    CommonEncoding = 1u << 13,
    CommonFile = 1u << 14,
    CommonImage = 1u << 15,
    CadExchange = 1u << 16,
    Apps = 1u << 17,
    SdkBrep = 1u << 18,
    Unknown = 1u << 31
};

constexpr unsigned Common = CommonEncoding | CommonFile | CommonImage;

struct Room
{
    const char* folder; ///< longest match wins
    unsigned self;
    unsigned allowed;
};

constexpr Room Rooms[] = {
    {"host/reference/", HostReference, Std | Host | Qt},
    {"host/", Host, Std},
    {"sdk/cadex/", SdkInterface, Std},
    {"sdk/model/", SdkModel, Std | SdkInterface},
    {"sdk/part21/", SdkPart21, Std | SdkInterface | SdkModel},
    {"sdk/occt/", SdkOcct, Std | SdkInterface | SdkModel | SdkPart21 | Occt},
    {"sdk/brep/", SdkBrep, Std | SdkInterface | SdkModel | SdkPart21 | SdkOcct | Occt},
    {"sdk/ifc/", SdkIfc, Std | SdkInterface | SdkModel | SdkPart21 | SdkOcct | Occt},
    {"common/encoding/", CommonEncoding, Std | Host | Qt | Uchardet},
    {"common/file/", CommonFile, Std | Host | Qt | CommonEncoding},
    {"common/image/", CommonImage, Std | Host | Qt | FreeImageLib | CommonEncoding | CommonFile},
    {"cadexchange/CZemtarCADExchangeReaderHandlerSolidHints.cpp", CadExchange,
     Std | Host | Qt | SdkInterface | Common | Occt},
    {"cadexchange/", CadExchange, Std | Host | Qt | SdkInterface | Common},
    {"apps/", Apps, Std | Qt | Host | SdkInterface | Common | CadExchange},
};

const Room* RoomOf(const std::string& path)
{
    const Room* best = nullptr;
    for (const Room& room : Rooms) {
        const std::string folder = room.folder;
        if (path.compare(0, folder.size(), folder) == 0 &&
            (!best || folder.size() > std::string(best->folder).size())) {
            best = &room;
        }
    }
    return best;
}

bool IsStandardHeader(const std::string& name)
{
    static const std::vector<std::string> posix = {"unistd.h",    "fcntl.h",  "signal.h", "sys/stat.h",
                                                   "sys/types.h", "errno.h",  "dirent.h", "langinfo.h",
                                                   "stdlib.h",    "locale.h", "xlocale.h"};
    return name.find_first_of("./") == std::string::npos ||
           std::find(posix.begin(), posix.end(), name) != posix.end();
}

unsigned KindOf(const std::string& name)
{
    if (name.compare(0, 6, "cadex/") == 0) {
        return SdkInterface;
    }
    if (const Room* room = RoomOf(name)) {
        return room->self;
    }
    if (name.compare(0, 6, "ifcpp/") == 0 || name.compare(0, 6, "carve/") == 0) {
        return Ifcpp;
    }
    if (name == "FreeImage.h") {
        return FreeImageLib;
    }
    if (name.find("uchardet") != std::string::npos) {
        return Uchardet;
    }
    static const std::regex qt(
        "(Qt[A-Z]\\w*/)?(Q[A-Z]\\w*|qt?[a-z]+\\.h)|ui_\\w+\\.h|moc_\\w+\\.cpp|\\w+\\.moc");
    if (std::regex_match(name, qt)) {
        return Qt;
    }
    if (IsStandardHeader(name)) {
        return Std;
    }
    if (name.size() > 4 &&
        (name.substr(name.size() - 4) == ".hxx" || name.substr(name.size() - 4) == ".lxx")) {
        return Occt;
    }
    return Unknown;
}

std::vector<std::string> BrokenIncludes(const fs::path& root)
{
    static const std::regex include("^\\s*#\\s*include\\s*[<\"]([^>\"]+)[>\"].*");
    std::vector<std::string> broken;
    for (const char* top : {"host", "sdk", "common", "cadexchange", "apps"}) {
        for (const auto& entry : fs::recursive_directory_iterator(root / top)) {
            const std::string extension = entry.path().extension().string();
            if (extension != ".h" && extension != ".hxx" && extension != ".cpp") {
                continue;
            }
            const std::string path = fs::relative(entry.path(), root).generic_string();
            const Room* room = RoomOf(path);
            std::ifstream file(entry.path());
            std::smatch match;
            for (std::string line; std::getline(file, line);) {
                if (room && std::regex_match(line, match, include) &&
                    !((room->allowed | room->self) & KindOf(match[1]))) {
                    broken.push_back(path + " includes " + match[1].str());
                }
            }
        }
    }
    return broken;
}

} // namespace

TEST(Layers, NoRoomIncludesWhatItMayNotKnow)
{
    for (const std::string& line : BrokenIncludes(ZEMTAR_SOURCE_DIR)) {
        ADD_FAILURE() << line;
    }
}

TEST(Layers, IncludesAreRecognised)
{
    EXPECT_EQ(KindOf("vector"), Std);
    EXPECT_EQ(KindOf("QString"), Qt);
    EXPECT_EQ(KindOf("TopoDS_Shape.hxx"), Occt);
    EXPECT_EQ(KindOf("cadex/ModelData_Part.hxx"), SdkInterface);
    EXPECT_EQ(KindOf("host/reference/Document.h"), HostReference);
    EXPECT_EQ(KindOf("host/CZemtarString.h"), Host);
    EXPECT_EQ(KindOf("boost/any.hpp"), Unknown);
}
