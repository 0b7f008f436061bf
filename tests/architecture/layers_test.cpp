// The layer rules: which room may include what. Reads every include line of the source tree.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

namespace fs = std::filesystem;

namespace {

/// A folder, by name, and what its files may include: rooms by their names, or libraries.
struct Room
{
    std::string_view folder; ///< longest match wins
    std::string_view name;
    std::string_view allowed; ///< beside itself
};

constexpr std::string_view Kernel = "std cadex model text part21 mesh occt brep OCCT";

constexpr Room Rooms[] = {
    {"host/reference/", "reference", "std host Qt"},
    {"host/", "host", "std"},
    {"sdk/cadex/", "cadex", "std"},
    {"sdk/model/", "model", "std cadex"},
    {"sdk/text/", "text", "std cadex zlib"},
    {"sdk/part21/", "part21", "std cadex text"},
    {"sdk/mesh/", "mesh", "std cadex model text"},
    {"sdk/occt/", "occt", "std cadex model text part21 mesh OCCT"},
    {"sdk/brep/", "brep", Kernel},
    {"sdk/step/", "step", Kernel},
    {"sdk/iges/", "iges", Kernel},
    {"sdk/ifc/", "ifc", Kernel},
    {"sdk/rhino/", "rhino", Kernel},
    {"sdk/acis/", "acis", Kernel},
    {"sdk/parasolid/", "parasolid", Kernel},
    {"sdk/solidworks/", "solidworks", "std cadex model text part21 mesh occt brep parasolid OCCT"},
    {"sdk/jt/", "jt", "std cadex model text part21 mesh occt brep parasolid OCCT zlib lzma"},
    {"sdk/Engines.cpp", "engines", "model step iges ifc rhino acis parasolid solidworks jt"},
    {"common/ZemtarExport.h", "export", ""},
    {"common/encoding/", "encoding", "std host Qt uchardet"},
    {"common/file/", "file", "std host Qt encoding"},
    {"common/image/", "image", "std host Qt FreeImage encoding file"},
    {"cadexchange/CZemtarCADExchangeReaderHandlerSolidHints.cpp", "cadexchange",
     "std host Qt cadex encoding file image OCCT"},
    {"cadexchange/", "cadexchange", "std host Qt QtWidgets cadex encoding file image"},
    {"apps/shared/", "shared", "std Qt host cadex encoding file image cadexchange export"},
    {"apps/geometry/", "geometry", "std"},
    {"apps/export/", "export", "std Qt host images geometry meshoptimizer"},
    {"apps/images/", "images", "std Qt host encoding file image"},
    {"apps/render/", "render", "std Qt host encoding file image shared images geometry"},
    {"apps/cli/", "cli", "std Qt host cadex encoding file image cadexchange CLI11 shared images render"},
    {"apps/thumbnailer/", "thumbnailer", "std Qt host shared render"},
    {"apps/viewer/", "viewer",
     "std Qt QtWidgets host cadex encoding file image cadexchange shared images render geometry"},
};

bool IsAllowed(const Room& room, std::string_view kind)
{
    const std::string list = " " + std::string(room.name) + " " + std::string(room.allowed) + " ";
    return list.find(" " + std::string(kind) + " ") != std::string::npos;
}

const Room* RoomOf(const std::string& path)
{
    const Room* best = nullptr;
    for (const Room& room : Rooms) {
        if (path.starts_with(room.folder) && (!best || room.folder.size() > best->folder.size())) {
            best = &room;
        }
    }
    return best;
}

bool IsStandardHeader(const std::string& name)
{
    static const std::vector<std::string> posix = {
        "unistd.h",   "fcntl.h", "signal.h", "sys/stat.h", "sys/types.h", "errno.h",  "dirent.h",
        "langinfo.h", "poll.h",  "spawn.h",  "sys/wait.h", "stdlib.h",    "locale.h", "xlocale.h"};
    return name.find_first_of("./") == std::string::npos ||
           std::find(posix.begin(), posix.end(), name) != posix.end();
}

std::string_view KindOf(const std::string& name)
{
    if (name == "common/ZemtarExport.h") { // names nothing but itself
        return "std";
    }
    if (name.compare(0, 6, "cadex/") == 0) {
        return "cadex";
    }
    if (const Room* room = RoomOf(name)) {
        return room->name;
    }
    if (name == "meshoptimizer.h") {
        return "meshoptimizer";
    }
    if (name == "zlib.h") {
        return "zlib";
    }
    if (name == "lzma.h") {
        return "lzma";
    }
    if (name.starts_with("CLI/")) {
        return "CLI11";
    }
    if (name == "FreeImage.h") {
        return "FreeImage";
    }
    if (name.find("uchardet") != std::string::npos) {
        return "uchardet";
    }
    // What needs a window: the command line and the renderer do without.
    static const std::regex widgets(
        "Qt(OpenGL)?Widgets/.*|ui_\\w+\\.h|Q(Application|MainWindow|Style|StyleFactory|"
        "StyleOption\\w*|Splitter|ToolTip|Frame|\\w*(Widget|Dialog|Button|Layout|View|"
        "Box|Menu|Bar|Label|Slider|Edit|Delegate|Area))");
    if (std::regex_match(name, widgets)) {
        return "QtWidgets";
    }
    static const std::regex qt(
        "(Qt[A-Z]\\w*/)?(Q[A-Z]\\w*|qt?[a-z]+\\.h)|ui_\\w+\\.h|moc_\\w+\\.cpp|\\w+\\.moc");
    if (std::regex_match(name, qt)) {
        return "Qt";
    }
    if (IsStandardHeader(name)) {
        return "std";
    }
    if (name.size() > 4 &&
        (name.substr(name.size() - 4) == ".hxx" || name.substr(name.size() - 4) == ".lxx")) {
        return "OCCT";
    }
    return "unknown";
}

/// The kernel's access to coordinates by number, which clang takes to be impossible.
std::vector<std::string> NumberedCoordinates(const fs::path& root)
{
    static const std::regex access(".*(\\.|->)(Set|Change)?Coord\\(.*");
    std::vector<std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(root / "sdk")) {
        std::ifstream file(entry.path());
        for (std::string line; entry.is_regular_file() && std::getline(file, line);) {
            if (std::regex_match(line, access)) {
                found.push_back(entry.path().string() + ": " + line);
            }
        }
    }
    return found;
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
            if (!room) {
                broken.push_back(path + " is in no room");
            }
            std::ifstream file(entry.path());
            std::smatch match;
            for (std::string line; std::getline(file, line);) {
                if (room && std::regex_match(line, match, include) && !IsAllowed(*room, KindOf(match[1]))) {
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

TEST(Layers, CoordinatesAreTakenByOurOwnFunctions)
{
    for (const std::string& line : NumberedCoordinates(ZEMTAR_SOURCE_DIR)) {
        ADD_FAILURE() << line << "\nsee sdk/occt/Coordinates.h";
    }
}

TEST(Layers, IncludesAreRecognised)
{
    EXPECT_EQ(KindOf("vector"), "std");
    EXPECT_EQ(KindOf("QString"), "Qt");
    EXPECT_EQ(KindOf("QWidget"), "QtWidgets");
    EXPECT_EQ(KindOf("QApplication"), "QtWidgets");
    EXPECT_EQ(KindOf("QGuiApplication"), "Qt");
    EXPECT_EQ(KindOf("TopoDS_Shape.hxx"), "OCCT");
    EXPECT_EQ(KindOf("cadex/ModelData_Part.hxx"), "cadex");
    EXPECT_EQ(KindOf("host/reference/Document.h"), "reference");
    EXPECT_EQ(KindOf("host/CZemtarString.h"), "host");
    EXPECT_EQ(KindOf("sdk/step/StepWriter.h"), "step");
    EXPECT_EQ(KindOf("boost/any.hpp"), "unknown");
}
