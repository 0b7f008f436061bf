// X bitmap: C source that declares an array of bytes or words.

#include "common/image/ImageFiles.h"
#include "common/image/PictureBytes.h"
#include "common/image/PictureStructure.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string>

namespace Zemtar::ImageFiles {
namespace {

/// One line as the decoder reads it; it must be shorter than the decoder's buffer. False at the end.
bool readXbmLine(PictureBytes& file, std::string& line)
{
    constexpr std::size_t kBuffer = 512;
    line.clear();
    while (file.Left() > 0 && line.size() < kBuffer - 1) {
        line += static_cast<char>(file.Byte());
        if (line.back() == '\n') {
            return true;
        }
    }
    return false;
}

/// Finds the array's declaration and the size before it; the bytes of an element, 0 when there is none.
int readXbmHeader(PictureBytes& file, int& width, int& height)
{
    constexpr std::size_t kBuffer = 512;
    std::string line;
    std::array<char, kBuffer> name;
    while (readXbmLine(file, line)) {
        int value = 0;
        if (std::sscanf(line.c_str(), "#define %511s %d", name.data(), &value) == 2) {
            const char* const part = std::strrchr(name.data(), '_');
            const std::string key = part != nullptr ? part + 1 : name.data();
            (key == "width" ? width : key == "height" ? height : value) = value;
        } else if (std::sscanf(line.c_str(), "static short %511s = {", name.data()) == 1) {
            return 2;
        } else if (std::sscanf(line.c_str(), "static char %511s = {", name.data()) == 1 ||
                   std::sscanf(line.c_str(), "static unsigned char %511s = {", name.data()) == 1) {
            return 1;
        }
    }
    return 0;
}

bool isHexDigit(unsigned byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'F') || (byte >= 'a' && byte <= 'f');
}

/// Whether the decoder finds `count` numbers, each with the character that ends it.
bool hasXbmBytes(PictureBytes& file, qint64 count)
{
    for (qint64 i = 0; i < count && file.IsGood(); ++i) {
        while (file.IsGood() && !isHexDigit(file.Byte())) {
        }
        unsigned byte = file.Byte();
        while (file.IsGood() && (isHexDigit(byte) || byte == 'x' || byte == 'X')) {
            byte = file.Byte();
        }
    }
    return file.IsGood();
}

bool hasXbmWords(PictureBytes& file, qint64 count)
{
    for (qint64 i = 0; i < count && file.IsGood(); ++i) {
        while (file.IsGood() && file.Byte() != 'x') {
        }
        file.Skip(4);
    }
    return file.IsGood();
}

} // namespace

bool isSoundXbm(const QByteArray& bytes)
{
    PictureBytes file(bytes);
    int width = -1;
    int height = -1;
    const int element = readXbmHeader(file, width, height);
    if (element == 0 || !isPossibleSize(width, height)) {
        return false;
    }
    const qint64 line = (qint64(width) + 7) / 8;
    return element == 1 ? hasXbmBytes(file, line * height) : hasXbmWords(file, (line + 1) / 2 * height);
}

} // namespace Zemtar::ImageFiles
