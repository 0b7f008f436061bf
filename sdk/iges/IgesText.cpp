#include "sdk/iges/IgesText.h"

#include <string>
#include <string_view>

#include "sdk/text/FileBytes.h"

namespace cadex::iges {

using text::ReadBytes;
namespace {

// NOTE: IGES 5.3, 2.2: lines of 80 characters; column 73 is the letter of the section.
constexpr std::size_t SectionColumn = 72;

} // namespace

bool IsSoundIges(const std::filesystem::path& file)
{
    std::string bytes;
    if (!ReadBytes(file, bytes)) {
        return false;
    }
    bool hasGlobal = false;
    bool hasDirectory = false;
    bool hasParameters = false;
    std::string_view rest(bytes);
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        const std::string_view line = rest.substr(0, end);
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
        if (line.size() <= SectionColumn) {
            continue;
        }
        switch (line[SectionColumn]) {
        case 'G':
            hasGlobal = true;
            break;
        case 'D':
            hasDirectory = hasGlobal;
            break;
        case 'P':
            hasParameters = hasDirectory;
            break;
        case 'T':
            return hasParameters;
        default:
            break;
        }
    }
    return hasParameters;
}

} // namespace cadex::iges
