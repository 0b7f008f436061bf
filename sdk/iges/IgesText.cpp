#include "sdk/iges/IgesText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

#include "sdk/text/FileBytes.h"
#include "sdk/text/TextNumbers.h"

namespace cadex::iges {

using text::ParseReal;
using text::ReadBytes;
namespace {

// NOTE: IGES 5.3, 2.2: lines of 80 characters; column 73 is the letter of the section, before it stands, in
// lines of parameters, the number of the entity's line in the directory.
constexpr std::size_t SectionColumn = 72;
constexpr std::size_t PointerColumn = 64;

/// Millimetres or any other unit: nothing that is built reaches that far, and the kernel hangs beyond.
constexpr double LargestNumber = 1e15;

int NumberIn(std::string_view text)
{
    const std::size_t first = text.find_first_of("0123456789");
    int number = 0;
    if (first != std::string_view::npos) {
        std::from_chars(text.data() + first, text.data() + text.size(), number);
    }
    return number;
}

/// The two characters that end a parameter and a record: the first parameters of the global section, as
/// strings of one character, when they are not the usual ones.
struct Delimiters
{
    char parameter = ',';
    char record = ';';

    void Read(std::string_view global)
    {
        if (global.substr(0, 2) == "1H" && global.size() > 3) {
            parameter = global[2];
            global.remove_prefix(4);
        } else if (!global.empty()) {
            global.remove_prefix(1);
        }
        if (global.substr(0, 2) == "1H" && global.size() > 2) {
            record = global[2];
        }
    }
};

bool IsUsable(std::string_view number)
{
    const std::size_t first = number.find_first_not_of(" +-");
    if (first == std::string_view::npos) {
        return true;
    }
    const char start = number[first];
    if (start == 'N' || start == 'n' || start == 'I' || start == 'i') {
        return false; // NAN, INF
    }
    constexpr std::size_t LongestPlain = 15;
    if (number.size() <= LongestPlain && number.find_first_of("EeDd") == std::string_view::npos) {
        return true;
    }
    const std::string_view trimmed = number.substr(
        number.find_first_not_of(' '), number.find_last_not_of(' ') + 1 - number.find_first_not_of(' '));
    double value = 0;
    if (!ParseReal(trimmed, value)) {
        // beyond the range of numbers; what is no number at all is the kernel's to refuse
        return trimmed.find_first_not_of("0123456789+-.EeDd") != std::string_view::npos;
    }
    return std::abs(value) <= LargestNumber;
}

/// All numbers of an entity's parameters; strings, which tell their length ("4HBolt"), are passed over.
bool HasUsableNumbers(std::string_view parameters, const Delimiters& delimiters)
{
    std::size_t at = 0;
    while (at < parameters.size()) {
        std::size_t digits = at;
        while (digits < parameters.size() &&
               (parameters[digits] == ' ' || (parameters[digits] >= '0' && parameters[digits] <= '9'))) {
            ++digits;
        }
        if (digits > at && digits < parameters.size() && parameters[digits] == 'H') {
            at = digits + 1 + static_cast<std::size_t>(NumberIn(parameters.substr(at, digits - at)));
        }
        std::size_t end = std::min(at, parameters.size());
        while (end < parameters.size() && parameters[end] != delimiters.parameter &&
               parameters[end] != delimiters.record) {
            ++end;
        }
        if (at < end && !IsUsable(parameters.substr(at, end - at))) {
            return false;
        }
        if (end < parameters.size() && parameters[end] == delimiters.record) {
            break; // what follows is a comment
        }
        at = end + 1;
    }
    return true;
}

class Reader
{
public:
    Findings Read(std::string_view rest)
    {
        while (!rest.empty() && !myEnded) {
            const std::size_t end = rest.find('\n');
            const std::string_view line = rest.substr(0, end);
            rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
            if (line.size() > SectionColumn) {
                ReadLine(line);
            }
        }
        EndEntity();
        myFindings.isIges = myFindings.isIges && myParameterLines > 0;
        myFindings.entities = myDirectoryLines / 2;
        myFindings.bare = myFindings.entities - std::min(myFindings.entities, myWithParameters.size());
        return myFindings;
    }

private:
    void ReadLine(std::string_view line)
    {
        switch (line[SectionColumn]) {
        case 'G':
            if (myGlobal.empty()) {
                myDelimiters.Read(line.substr(0, SectionColumn));
            }
            myGlobal = line;
            break;
        case 'D':
            myFindings.isIges = !myGlobal.empty();
            ++myDirectoryLines;
            break;
        case 'P':
            AddParameters(line);
            break;
        case 'T':
            ReadEnd(line);
            break;
        default:
            break;
        }
    }

    void AddParameters(std::string_view line)
    {
        ++myParameterLines;
        const int entity = NumberIn(line.substr(PointerColumn, SectionColumn - PointerColumn));
        if (entity != myEntity) {
            EndEntity();
            myEntity = entity;
        }
        myParameters += line.substr(0, PointerColumn);
    }

    void EndEntity()
    {
        if (!myParameters.empty()) {
            myWithParameters.insert(myEntity);
            if (!HasUsableNumbers(myParameters, myDelimiters)) {
                myFindings.unusable.insert(myEntity);
            }
        }
        myParameters.clear();
    }

    /// NOTE: IGES 5.3, 2.2.4.6: "S", "G", "D" and "P", each with the number of its last line in 7 columns.
    void ReadEnd(std::string_view line)
    {
        constexpr std::size_t DirectoryCount = 17;
        constexpr std::size_t ParameterCount = 25;
        constexpr std::size_t Width = 7;
        myEnded = true;
        myFindings.isWhole =
            static_cast<std::size_t>(NumberIn(line.substr(DirectoryCount, Width))) == myDirectoryLines &&
            static_cast<std::size_t>(NumberIn(line.substr(ParameterCount, Width))) == myParameterLines;
    }

    Findings myFindings;
    Delimiters myDelimiters;
    std::string_view myGlobal;
    std::string myParameters;
    int myEntity = 0;
    std::set<int> myWithParameters;
    std::size_t myDirectoryLines = 0;
    std::size_t myParameterLines = 0;
    bool myEnded = false;
};

} // namespace

Findings LookAt(const std::filesystem::path& file)
{
    std::string bytes;
    return ReadBytes(file, bytes) ? Reader().Read(bytes) : Findings();
}

} // namespace cadex::iges
