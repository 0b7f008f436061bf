#include "sdk/acis/AcisBinary.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>

#include <cadex/internal/Progress.hxx>

#include "sdk/acis/AcisRecords.h"

namespace cadex::acis {

namespace {

constexpr std::size_t SignatureSize = 15;
constexpr std::string_view Narrow[] = {"ACIS BinaryFile", "ASM BinaryFile4"};
constexpr std::string_view Wide = "ASM BinaryFile8"; ///< whole numbers of eight bytes

enum Tag : std::uint8_t
{
    Character = 2,
    Short = 3,
    Whole = 4,
    Single = 5,
    Real = 6,
    Text8 = 7, ///< with a length of so many bits
    Text16 = 8,
    Text32 = 9,
    True = 10,
    False = 11,
    Pointer = 12,
    LastName = 13, ///< of a chain of names
    Name = 14,
    BlockBegin = 15,
    BlockEnd = 16,
    RecordEnd = 17,
    LongText = 18,
    Position = 19,
    Direction = 20,
    Choice = 21,
    Pair = 22,
    Whole64 = 23
};

bool IsNamePart(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.';
}

class Converter
{
public:
    explicit Converter(std::string_view bytes) : myBytes(bytes), myPosition(SignatureSize)
    {
        myIsWide = bytes.substr(0, SignatureSize) == Wide;
        myText.reserve(bytes.size() * 2);
    }

    std::string Convert()
    {
        ReadHeader();
        while (ReadRecord()) {
            constexpr std::size_t Step = 4096;
            if (++myRecords % Step == 0 && !internal::Progress::GoesOn(myPosition, myBytes.size())) {
                throw Unreadable("cancelled");
            }
        }
        return std::move(myText);
    }

private:
    template <typename T>
    T Get()
    {
        T value{};
        std::memcpy(&value, Take(sizeof(T)).data(), sizeof(T));
        return value;
    }
    std::string_view Take(std::uint64_t size)
    {
        if (size > myBytes.size() - myPosition) {
            throw Unreadable("the file ends too early");
        }
        const std::string_view taken = myBytes.substr(myPosition, static_cast<std::size_t>(size));
        myPosition += static_cast<std::size_t>(size);
        return taken;
    }
    std::int64_t GetWhole() { return myIsWide ? Get<std::int64_t>() : Get<std::int32_t>(); }

    template <typename Number>
    void Add(Number value)
    {
        char digits[40];
        const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), value);
        myText.append(digits, error == std::errc() ? end : digits);
        myText += ' ';
    }
    void AddWord(std::string_view word)
    {
        myText += word;
        myText += ' ';
    }
    void AddText(std::string_view text)
    {
        myText += '@';
        Add(text.size());
        AddWord(text);
    }
    void AddReals(int count)
    {
        for (int i = 0; i < count; ++i) {
            Add(Get<double>());
        }
    }

    std::string_view TaggedText()
    {
        const auto tag = Get<std::uint8_t>();
        if (tag != Text8) {
            throw Unreadable("the header of the file is damaged");
        }
        return Take(Get<std::uint8_t>());
    }

    void ReadHeader()
    {
        for (int i = 0; i < 4; ++i) { // version, records, bodies, switches
            Add(GetWhole());
        }
        for (int i = 0; i < 3; ++i) {
            AddText(TaggedText());
        }
        for (int i = 0; i < 3; ++i) { // unit, tolerances
            if (Get<std::uint8_t>() != Real) {
                throw Unreadable("the header of the file is damaged");
            }
            AddReals(1);
        }
        myText += '\n';
    }

    /// False behind the last one.
    bool ReadRecord()
    {
        const std::size_t begin = myText.size();
        bool isPlacement = false;
        int open = 0;
        while (true) {
            const auto tag = Get<std::uint8_t>();
            switch (tag) {
            case RecordEnd:
                if (open != 0) {
                    throw Unreadable("a record ends inside of a block");
                }
                AddWord("#\n");
                return true;
            case Name:
                AddName(Take(Get<std::uint8_t>()));
                myText += '-';
                break;
            case LastName: {
                AddName(Take(Get<std::uint8_t>()));
                const std::string_view type = std::string_view(myText).substr(begin);
                if (type.starts_with("End-of-") || type.starts_with("Begin-of-")) {
                    return false;
                }
                isPlacement = isPlacement || type == "transform";
                myText += ' ';
                break;
            }
            case LongText: {
                const std::string_view text = Take(static_cast<std::uint64_t>(GetWhole()));
                if (!isPlacement) {
                    AddText(text);
                    break;
                }
                // numbers as the text form has them
                for (const char c : text) {
                    myText += IsNamePart(c) || c == '-' || c == '+' ? c : ' ';
                }
                myText += ' ';
                break;
            }
            case BlockBegin:
                ++open;
                AddWord("{");
                break;
            case BlockEnd:
                if (open-- == 0) {
                    throw Unreadable("a block ends that was not open");
                }
                AddWord("}");
                break;
            default:
                ReadValue(tag);
                break;
            }
        }
    }

    void AddName(std::string_view name)
    {
        // what is no name could be anything else in the text
        if (name.empty() || !std::all_of(name.begin(), name.end(), IsNamePart) ||
            !std::isalpha(static_cast<unsigned char>(name[0]))) {
            throw Unreadable("a name is none");
        }
        myText += name;
    }

    void ReadValue(std::uint8_t tag)
    {
        switch (tag) {
        case Character:
            Add(static_cast<int>(Get<std::int8_t>()));
            break;
        case Short:
            Add(Get<std::int16_t>());
            break;
        case Whole:
            Add(GetWhole());
            break;
        case Whole64:
            Add(Get<std::int64_t>());
            break;
        case Single:
            Add(Get<float>());
            break;
        case Real:
            AddReals(1);
            break;
        case Position:
        case Direction:
            AddReals(3);
            break;
        case Pair:
            AddReals(2);
            break;
        case Text8:
            AddText(Take(Get<std::uint8_t>()));
            break;
        case Text16:
            AddText(Take(Get<std::uint16_t>()));
            break;
        case Text32:
            AddText(Take(Get<std::uint32_t>()));
            break;
        case True:
            AddWord("true");
            break;
        case False:
            AddWord("false");
            break;
        case Pointer:
            myText += '$';
            Add(GetWhole());
            break;
        case Choice:
            myText += 'e';
            Add(GetWhole());
            break;
        default:
            throw Unreadable("a value has a tag that is none");
        }
    }

    std::string_view myBytes;
    std::size_t myPosition;
    bool myIsWide = false;
    std::string myText;
    std::size_t myRecords = 0;
};

} // namespace

bool IsBinary(std::string_view bytes)
{
    const std::string_view signature = bytes.substr(0, SignatureSize);
    return signature == Wide ||
           std::find(std::begin(Narrow), std::end(Narrow), signature) != std::end(Narrow);
}

std::string TextFromBinary(std::string_view bytes)
{
    return Converter(bytes).Convert();
}

} // namespace cadex::acis
