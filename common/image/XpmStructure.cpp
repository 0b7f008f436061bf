// X pixmap: C strings that hold the size, the colours by their characters, and the rows.

#include "common/image/ImageFiles.h"
#include "common/image/PictureStructure.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace Zemtar::ImageFiles {
namespace {

/// The quoted strings of a file, one after the other, each up to a zero in it.
class Strings
{
public:
    explicit Strings(std::string_view text) : m_text(text)
    {
        const std::size_t brace = m_text.find('{');
        m_text.remove_prefix(brace == std::string_view::npos ? m_text.size() : brace + 1);
    }

    std::optional<std::string_view> Next()
    {
        const std::size_t open = m_text.find('"');
        const std::size_t close = open == std::string_view::npos ? open : m_text.find('"', open + 1);
        if (close == std::string_view::npos) {
            return std::nullopt;
        }
        const std::string_view text = m_text.substr(open + 1, close - open - 1);
        m_text.remove_prefix(close + 1);
        return text.substr(0, text.find('\0'));
    }

private:
    std::string_view m_text;
};

/// Whether the decoder reads a colour without leaving its text: in a name it looks two characters beyond each
/// blank, and unknown names it prints.
bool isSoundColor(std::string_view text, std::size_t characters)
{
    constexpr std::size_t kLongestName = 200;
    if (text.size() < characters) {
        return false;
    }
    std::string keys(text.substr(characters));
    std::replace(keys.begin(), keys.end(), '\t', ' ');
    const std::size_t key = keys.find(" c ");
    const std::size_t begin = key == std::string::npos ? key : keys.find_first_not_of(' ', key + 3);
    if (begin == std::string::npos) {
        return false;
    }
    const std::string name = keys.substr(begin);
    const std::size_t blank = name.rfind(' ');
    return name.front() == '#' ||
           (text.size() <= kLongestName && (blank == std::string::npos || blank + 2 < name.size()));
}

} // namespace

bool isSoundXpm(const QByteArray& bytes)
{
    Strings strings(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    const auto sizes = strings.Next();
    int width = 0, height = 0, colors = 0, characters = 0;
    if (!sizes ||
        std::sscanf(std::string(*sizes).c_str(), "%d %d %d %d", &width, &height, &colors, &characters) != 4 ||
        !isPossibleSize(width, height) || colors <= 0 || characters <= 0) {
        return false;
    }
    const auto length = static_cast<std::size_t>(characters);
    std::unordered_set<std::string_view> known;
    for (int i = 0; i < colors; ++i) {
        const auto color = strings.Next();
        if (!color || !isSoundColor(*color, length)) {
            return false;
        }
        known.insert(color->substr(0, length));
    }
    for (int y = 0; y < height; ++y) {
        const auto row = strings.Next();
        if (!row || row->size() / length < static_cast<std::size_t>(width)) {
            return false;
        }
        for (int x = 0; x < width; ++x) {
            if (known.count(row->substr(static_cast<std::size_t>(x) * length, length)) == 0) {
                return false;
            }
        }
    }
    return true;
}

} // namespace Zemtar::ImageFiles
