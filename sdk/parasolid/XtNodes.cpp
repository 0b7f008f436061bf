#include "sdk/parasolid/XtNodes.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include <cadex/internal/Progress.hxx>

#include "sdk/text/TextNumbers.h"

namespace cadex::parasolid {

namespace {

constexpr double Null = std::numeric_limits<double>::quiet_NaN();
constexpr std::string_view BinaryMark{"PS\0\0", 4};
constexpr int Terminator = 1;
constexpr int Unchanged = 255;
constexpr int HighestType = 1000;
constexpr std::size_t LongestName = 4096; ///< of a field, a schema

[[noreturn]] void EndsEarly()
{
    throw Unreadable("the file ends too early");
}

/// The text form; line ends do not count.
class TextSource
{
public:
    explicit TextSource(std::string_view bytes)
    {
        myText.reserve(bytes.size());
        for (std::size_t at = 0; at < bytes.size();) {
            const std::size_t end = std::min(bytes.find_first_of("\r\n", at), bytes.size());
            myText.append(bytes, at, end - at);
            at = end + 1;
        }
        myNext = myText.data() + 1; // behind the T
        myEnd = myText.data() + myText.size();
    }

    std::size_t Left() const { return static_cast<std::size_t>(myEnd - myNext); }

    double Whole()
    {
        if (IsNull()) {
            return Null;
        }
        std::int64_t value = 0;
        const auto [end, error] = std::from_chars(myNext, myEnd, value);
        if (error != std::errc() || end == myEnd || *end != ' ') {
            BadNumber();
        }
        myNext = end + 1;
        return static_cast<double>(value);
    }
    double Real()
    {
        if (IsNull()) {
            return Null;
        }
        double value = 0;
        const char* end = text::ReadReal(myNext, myEnd, value);
        if (end == myNext || end == myEnd || *end != ' ') {
            BadNumber();
        }
        myNext = end + 1;
        return value;
    }
    double Character()
    {
        const char c = Byte();
        if (c != '\\') {
            return static_cast<unsigned char>(c);
        }
        const char escaped = Byte();
        switch (escaped) {
        case '0':
            return 0;
        case 'n':
            return '\r';
        case 'r':
            return '\n';
        case '9':
            myBlanks = 8;
            return ' ';
        default:
            return static_cast<unsigned char>(escaped);
        }
    }
    /// Of a string: an escape may stand for several.
    double NextCharacter()
    {
        if (myBlanks > 0) {
            --myBlanks;
            return ' ';
        }
        return Character();
    }
    double Logical() { return Byte() == 'T' ? 1 : 0; }

    double Read(char kind)
    {
        switch (kind) {
        case 'c':
            return Character();
        case 'l':
            return Logical();
        case 'f':
            return Real();
        default:
            return Whole();
        }
    }
    /// A vector or another group of reals; one sign stands for a null one.
    void ReadGroup(char kind, int count, double* values)
    {
        values[0] = Real();
        const bool isNull = kind != 'i' && kind != 'b' && std::isnan(values[0]);
        for (int i = 1; i < count; ++i) {
            values[i] = isNull ? Null : Real();
        }
    }

    double NodeType() { return Whole(); }
    double Small() { return Whole(); } ///< a number of a schema
    double FieldCount() { return Whole(); }
    double VariableLength() { return Whole(); }
    double Pointer() { return Whole(); }
    double Elements() { return Whole(); }
    char Letter() { return Byte(); }
    std::string Name() { return Characters(Whole()); }
    std::string Lead() { return Characters(Whole()); }
    std::string SchemaName() { return Characters(Whole()); }

private:
    [[noreturn]] static void BadNumber() { throw Unreadable("a number was expected"); }

    bool IsNull()
    {
        myBlanks = 0;
        if (myNext == myEnd) {
            EndsEarly();
        }
        if (*myNext != '?') {
            return false;
        }
        ++myNext;
        return true;
    }
    char Byte()
    {
        if (myNext == myEnd) {
            EndsEarly();
        }
        return *myNext++;
    }
    std::string Characters(double count)
    {
        if (!(count >= 0) || !(count <= static_cast<double>(std::min(Left(), LongestName)))) {
            throw Unreadable("a text is longer than the file");
        }
        std::string result;
        while (result.size() < static_cast<std::size_t>(count)) {
            result.push_back(static_cast<char>(static_cast<int>(NextCharacter())));
        }
        return result;
    }

    std::string myText;
    const char* myNext;
    const char* myEnd;
    int myBlanks = 0; ///< that still stand for an escape
};

/// The neutral binary form: big-endian.
class BinarySource
{
public:
    explicit BinarySource(std::string_view bytes)
        : myNext(bytes.data() + BinaryMark.size()), myEnd(bytes.data() + bytes.size())
    {
    }

    std::size_t Left() const { return static_cast<std::size_t>(myEnd - myNext); }

    double Read(char kind)
    {
        switch (kind) {
        case 'u':
        case 'c':
        case 'l':
            return static_cast<double>(Unsigned(1));
        case 'w':
            return static_cast<double>(Unsigned(2));
        case 'n':
            return NullOr(Short());
        case 'd':
            return NullOr(static_cast<std::int32_t>(Unsigned(4)));
        case 'p':
            return Pointer();
        default:
            return Real();
        }
    }
    void ReadGroup(char, int count, double* values)
    {
        for (int i = 0; i < count; ++i) {
            values[i] = Real();
        }
    }
    double NextCharacter() { return static_cast<double>(Unsigned(1)); }

    double Whole() { return static_cast<std::int32_t>(Unsigned(4)); }
    double NodeType() { return Short(); }
    double Small() { return Short(); }
    double FieldCount() { return static_cast<double>(Unsigned(1)); }
    double VariableLength() { return Whole(); }
    double Elements() { return Pointer(); }
    double Logical() { return static_cast<double>(Unsigned(1)); }
    char Letter() { return static_cast<char>(Unsigned(1)); }
    std::string Name() { return Characters(Unsigned(1)); }
    std::string Lead() { return Characters(Unsigned(2)); }
    std::string SchemaName() { return Characters(Unsigned(4)); }

    /// Small ones in two bytes, larger ones in four.
    double Pointer()
    {
        constexpr int Step = 32767;
        const int low = Short();
        return low < 0 ? Short() * static_cast<double>(Step) - low - 1 : low - 1;
    }

private:
    static double NullOr(int value)
    {
        constexpr int NullInteger = -32764;
        return value == NullInteger ? Null : value;
    }
    std::uint64_t Unsigned(std::size_t size)
    {
        if (Left() < size) {
            EndsEarly();
        }
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size; ++i) {
            value = value << 8 | static_cast<unsigned char>(*myNext++);
        }
        return value;
    }
    int Short() { return static_cast<std::int16_t>(Unsigned(2)); }
    double Real()
    {
        constexpr double NullReal = -3.14158e13;
        const auto value = std::bit_cast<double>(Unsigned(8));
        return value == NullReal ? Null : value;
    }
    std::string Characters(std::uint64_t count)
    {
        if (count > std::min(Left(), LongestName)) {
            throw Unreadable("a text is longer than the file");
        }
        std::string result(myNext, count);
        myNext += count;
        return result;
    }

    const char* myNext;
    const char* myEnd;
};

/// A whole number within bounds, else the file is refused.
int Bounded(double value, int low, int high, const char* reason)
{
    if (!(value >= low && value <= high)) {
        throw Unreadable(reason);
    }
    return static_cast<int>(value);
}

} // namespace

// ----------------------------------------------------------------------------------------------------
// reading

/// Reads one file from its source into the nodes.
template <typename Source>
class NodeReader
{
public:
    NodeReader(Nodes& nodes, std::string_view bytes) : myNodes(nodes), mySource(bytes) {}

    void Run()
    {
        myNodes.myModeller = mySource.Lead();
        myNodes.mySchema = mySource.SchemaName();
        ReadSchemaName();
        if (myIsEmbedded) {
            mySource.Small(); // the highest type
        }
        myUserFields = Bounded(mySource.Whole(), 0, 16, "the user fields make no sense");
        while (ReadNode()) {
            if (myNodes.Size() % 4096 == 0 && !internal::Progress::GoesOn()) {
                throw Unreadable("cancelled");
            }
        }
        if (myNodes.Size() == 0) {
            throw Unreadable("the file has no parts");
        }
    }

private:
    /// SCH_writer_version, with a third number where the file brings its differences to that one.
    void ReadSchemaName()
    {
        const std::string& name = myNodes.mySchema;
        int numbers[3] = {0, 0, 0};
        int count = 0;
        std::size_t at = name.find('_');
        for (; at != std::string::npos && count < 3; ++count) {
            std::from_chars(name.data() + at + 1, name.data() + name.size(), numbers[count]);
            at = name.find('_', at + 1);
        }
        constexpr int Base = 13006;
        myIsEmbedded = count == 3;
        myVersion = numbers[1];
        if (!name.starts_with("SCH_") || count < 2) {
            throw Unreadable("not a schema of Parasolid: " + name);
        }
        if (myIsEmbedded ? numbers[2] != Base : myVersion > 2 * Base) {
            throw Unreadable("unknown schema " + name);
        }
    }

    const Layout& LayoutOf(int type)
    {
        if (myLayouts.size() <= static_cast<std::size_t>(type)) {
            myLayouts.resize(static_cast<std::size_t>(type) + 1);
        }
        const Layout*& known = myLayouts[static_cast<std::size_t>(type)];
        if (known == nullptr) {
            known = myIsEmbedded ? EmbeddedLayout(type) : FixedLayout(type, myVersion);
            known = known == nullptr ? BaseLayout(type) : known;
        }
        if (known == nullptr) {
            throw Unreadable("a node of unknown type " + std::to_string(type));
        }
        return *known;
    }

    /// Null: that of the base.
    const Layout* EmbeddedLayout(int type)
    {
        const int count = Bounded(mySource.FieldCount(), 0, 255, "a schema that makes no sense");
        if (count == Unchanged) {
            return nullptr;
        }
        std::vector<FieldLayout> fields;
        if (const Layout* base = BaseLayout(type)) {
            fields = Edited(base->Fields());
        } else {
            mySource.Name();
            mySource.Name(); // a description
            for (int i = 0; i < count; ++i) {
                fields.push_back(ReadField());
            }
        }
        if (fields.size() != static_cast<std::size_t>(count)) {
            throw Unreadable("a schema that makes no sense");
        }
        for (std::size_t i = 0; i + 1 < fields.size(); ++i) {
            if (fields[i].IsVariable()) {
                throw Unreadable("a schema that makes no sense");
            }
        }
        return &myNodes.myOwnLayouts.emplace_back(std::move(fields));
    }

    std::vector<FieldLayout> Edited(const std::vector<FieldLayout>& base)
    {
        std::vector<FieldLayout> fields;
        std::size_t next = 0;
        for (char letter = mySource.Letter(); letter != 'Z'; letter = mySource.Letter()) {
            if (letter == 'I' || letter == 'A') {
                fields.push_back(ReadField());
            } else if ((letter == 'C' || letter == 'D') && next < base.size()) {
                if (letter == 'C') {
                    fields.push_back(base[next]);
                }
                ++next;
            } else {
                throw Unreadable("a schema that makes no sense");
            }
        }
        return fields;
    }

    FieldLayout ReadField()
    {
        FieldLayout field;
        field.field = FieldNamed(mySource.Name());
        const double pointerClass = mySource.Small();
        field.count = Bounded(mySource.Elements(), 0, 1000, "a schema that makes no sense");
        const std::string kind = pointerClass == 0 ? mySource.Name() : "p";
        field.kind = kind.empty() ? '?' : kind[0];
        if (NumbersOf(field.kind) == 0) {
            throw Unreadable("a field of unknown type " + kind);
        }
        if (field.IsVariable()) {
            mySource.Logical();
        }
        return field;
    }

    bool ReadNode()
    {
        const int type = Bounded(mySource.NodeType(), 1, HighestType, "a node of unknown type");
        if (type == Terminator) {
            mySource.Pointer();
            return false;
        }
        const Layout& layout = LayoutOf(type);
        std::size_t length = 0;
        if (layout.HasVariable()) {
            const double claimed = mySource.VariableLength();
            if (!(claimed >= 0 && claimed <= static_cast<double>(mySource.Left()))) {
                throw Unreadable("a node is longer than the file");
            }
            length = static_cast<std::size_t>(claimed);
        }
        const int index = Bounded(mySource.Pointer(), 0, std::numeric_limits<std::int32_t>::max() - 1,
                                  "a node without a number");
        const std::size_t first = myNodes.myNumbers.size();
        for (const FieldLayout& field : layout.Fields()) {
            ReadValues(field, field.IsVariable() ? length : static_cast<std::size_t>(field.Times()));
        }
        for (int i = 0; i < myUserFields; ++i) {
            mySource.Whole();
        }
        myNodes.myEntries.push_back(
            {&layout, first, static_cast<std::uint32_t>(myNodes.myNumbers.size() - first), index, type});
        return true;
    }

    void ReadValues(const FieldLayout& field, std::size_t count)
    {
        std::vector<double>& numbers = myNodes.myNumbers;
        const int each = NumbersOf(field.kind);
        if (each > 1) {
            for (std::size_t i = 0; i < count; ++i) {
                double group[6];
                mySource.ReadGroup(field.kind, each, group);
                numbers.insert(numbers.end(), group, group + each);
            }
        } else if (field.kind == 'c' && field.IsVariable()) {
            for (std::size_t i = 0; i < count; ++i) {
                numbers.push_back(mySource.NextCharacter());
            }
        } else {
            for (std::size_t i = 0; i < count; ++i) {
                numbers.push_back(mySource.Read(field.kind));
            }
        }
    }

    Nodes& myNodes;
    Source mySource;
    bool myIsEmbedded = false;
    int myVersion = 0;
    int myUserFields = 0;
    std::vector<const Layout*> myLayouts; ///< by type; null: not met yet
};

namespace {

/// What follows the header of lines; empty when the bytes are no transmit file.
std::string_view Transmitted(std::string_view bytes)
{
    constexpr std::string_view End = "**END_OF_HEADER";
    if (bytes.starts_with("**")) {
        const std::size_t end = bytes.find(End);
        const std::size_t line = end == std::string_view::npos ? end : bytes.find('\n', end);
        bytes.remove_prefix(line == std::string_view::npos ? bytes.size() : line + 1);
    }
    const std::size_t first = bytes.find_first_not_of(" \r\n\t");
    return first == std::string_view::npos ? std::string_view() : bytes.substr(first);
}

} // namespace

Nodes::Nodes(std::string_view bytes)
{
    bytes = Transmitted(bytes);
    if (bytes.starts_with(BinaryMark)) {
        NodeReader<BinarySource>(*this, bytes).Run();
    } else if (bytes.size() > 1 && bytes[0] == 'T' && bytes[1] >= '0' && bytes[1] <= '9') {
        NodeReader<TextSource>(*this, bytes).Run();
    } else if (bytes.size() > 1 && bytes[0] == 'B') {
        throw Unreadable("binary of one kind of machine; neutral binary and text are read");
    } else {
        throw Unreadable("not a Parasolid transmit file");
    }
    Index();
}

/// Where an index comes twice, the first node has it.
void Nodes::Index()
{
    const std::size_t dense = 4 * myEntries.size() + 1024;
    for (std::size_t place = 0; place < myEntries.size(); ++place) {
        const auto index = static_cast<std::size_t>(myEntries[place].index);
        const auto value = static_cast<std::uint32_t>(place + 1);
        if (index >= dense) {
            mySparse.emplace(myEntries[place].index, value);
            continue;
        }
        if (index >= myPlaces.size()) {
            myPlaces.resize(std::max(index + 1, std::min(dense, 2 * myPlaces.size())));
        }
        if (myPlaces[index] == 0) {
            myPlaces[index] = value;
        }
    }
}

Node Nodes::operator[](std::size_t place) const
{
    const Entry& entry = myEntries[place];
    return {*entry.layout, {myNumbers.data() + entry.first, entry.count}, entry.type, entry.index};
}

Node Nodes::At(int index) const
{
    if (index <= 0) {
        return {};
    }
    std::uint32_t place = 0;
    if (static_cast<std::size_t>(index) < myPlaces.size()) {
        place = myPlaces[static_cast<std::size_t>(index)];
    } else if (const auto found = mySparse.find(index); found != mySparse.end()) {
        place = found->second;
    }
    return place == 0 ? Node() : (*this)[place - 1];
}

// ------------------------------------------------------------------------------------------------- one node

double Node::Number(Field field, int place) const
{
    const int slot = myLayout == nullptr ? Layout::Absent : myLayout->SlotOf(field);
    if (slot == Layout::Absent || place < 0) {
        return Null;
    }
    const std::size_t at = static_cast<std::size_t>(slot) + static_cast<std::size_t>(place);
    return at < myNumbers.size() ? myNumbers[at] : Null;
}

int Node::Integer(Field field, int ifNull) const
{
    const double value = Number(field);
    return std::abs(value) <= std::numeric_limits<std::int32_t>::max() ? static_cast<int>(value) : ifNull;
}

int Node::Pointer(Field field, int place) const
{
    const double value = Number(field, place);
    return value >= 0 && value <= std::numeric_limits<std::int32_t>::max() ? static_cast<int>(value) : 0;
}

gp_XYZ Node::Vector(Field field) const
{
    return {Number(field, 0), Number(field, 1), Number(field, 2)};
}

std::span<const double> Node::All(Field field) const
{
    const int slot = myLayout == nullptr ? Layout::Absent : myLayout->SlotOf(field);
    if (slot == Layout::Absent || static_cast<std::size_t>(slot) > myNumbers.size()) {
        return {};
    }
    const FieldLayout& layout = *myLayout->Find(field);
    const std::span<const double> rest = myNumbers.subspan(static_cast<std::size_t>(slot));
    return layout.IsVariable() ? rest
                               : rest.first(static_cast<std::size_t>(NumbersOf(layout.kind)) *
                                            static_cast<std::size_t>(layout.Times()));
}

} // namespace cadex::parasolid
