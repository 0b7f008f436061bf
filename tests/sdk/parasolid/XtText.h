// Parasolid transmit files in memory: nodes by their fields, as text or neutral binary, with the fixed schema
// of version 13 or with one of the file's own that differs from it.
//
//     XtText xt;
//     const int point = xt.Add(type::Point, {{Field::Pvec, {0, 0, 0.01}}});
//     std::istringstream file(xt.Text());
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "sdk/parasolid/XtSchema.h"

namespace xttest {

using namespace cadex::parasolid;

inline constexpr double Null = std::numeric_limits<double>::quiet_NaN();
using Values = std::vector<double>;
using FieldValues = std::vector<std::pair<Field, Values>>;

inline Values Codes(const std::string& text)
{
    Values codes;
    for (const char c : text) {
        codes.push_back(static_cast<unsigned char>(c));
    }
    return codes;
}

class XtText
{
public:
    /// Gives the index of the node. Fields that are not given are null, 0 or '+'.
    int Add(int type, const FieldValues& fields = {})
    {
        const Layout& layout = *BaseLayout(type);
        Node node{type, {}, 0};
        for (const FieldLayout& field : layout.Fields()) {
            const double value = field.kind == 'c'                                ? '+'
                                 : NumbersOf(field.kind) > 1 || field.kind == 'f' ? Null
                                                                                  : 0;
            if (!field.IsVariable()) {
                node.numbers.insert(node.numbers.end(), Count(field), value);
            }
        }
        myNodes.push_back(std::move(node));
        const int index = static_cast<int>(myNodes.size());
        for (const auto& [field, values] : fields) {
            Set(index, field, values);
        }
        return index;
    }
    void Set(int index, Field field, const Values& values)
    {
        Node& node = myNodes[static_cast<std::size_t>(index) - 1];
        const Layout& layout = *BaseLayout(node.type);
        const auto slot = static_cast<std::size_t>(layout.SlotOf(field));
        if (layout.Find(field)->IsVariable()) {
            node.numbers.resize(slot);
            node.numbers.insert(node.numbers.end(), values.begin(), values.end());
            node.length = values.size() / static_cast<std::size_t>(NumbersOf(layout.Find(field)->kind));
            return;
        }
        std::copy(values.begin(), values.end(), node.numbers.begin() + static_cast<std::ptrdiff_t>(slot));
    }
    double Get(int index, Field field) const
    {
        const Node& node = myNodes[static_cast<std::size_t>(index) - 1];
        return node.numbers[static_cast<std::size_t>(BaseLayout(node.type)->SlotOf(field))];
    }
    int Last() const { return static_cast<int>(myNodes.size()); }

    /// Own schema: faces have two fields more, edges lack one, and a node of an unknown type comes first.
    std::string Text(bool hasOwnSchema = false) const { return TextForm(*this, hasOwnSchema).Run(); }
    std::string Binary(bool hasOwnSchema = false) const { return BinaryForm(*this, hasOwnSchema).Run(); }

private:
    struct Node
    {
        int type;
        Values numbers;
        std::size_t length;
    };

    static std::size_t Count(const FieldLayout& field)
    {
        return static_cast<std::size_t>(NumbersOf(field.kind)) * static_cast<std::size_t>(field.Times());
    }

    /// What both forms have in common.
    template <typename Form>
    class Writer
    {
    public:
        Writer(const XtText& source, bool hasOwnSchema) : mySource(source), myHasOwn(hasOwnSchema) {}

    protected:
        const char* Schema() const { return myHasOwn ? "SCH_3100000_31000_13006" : "SCH_1300000_13006"; }
        void WriteNodes()
        {
            Form& form = static_cast<Form&>(*this);
            form.Whole(0); // user fields
            if (myHasOwn) {
                WriteStranger();
            }
            for (std::size_t i = 0; i < mySource.myNodes.size(); ++i) {
                WriteNode(static_cast<int>(i) + 1, mySource.myNodes[i]);
            }
            form.Short(1);
            form.Pointer(0);
        }

    private:
        void WriteStranger()
        {
            Form& form = static_cast<Form&>(*this);
            form.Short(300);
            form.Count(2);
            form.Name("stranger");
            form.Name("what later versions may bring");
            WriteField("weight", 0, 0, "f");
            WriteField("letters", 0, 1, "c");
            form.Whole(3); // letters
            form.Pointer(static_cast<int>(mySource.myNodes.size()) + 9);
            form.Value('f', 0.5);
            for (const char c : {'a', 'b', 'c'}) {
                form.Value('c', c);
            }
        }
        void WriteField(const char* name, int pointerClass, int count, const char* kind)
        {
            Form& form = static_cast<Form&>(*this);
            form.Name(name);
            form.Short(pointerClass);
            form.Elements(count);
            if (pointerClass == 0) {
                form.Name(kind);
            }
            if (count == 1) {
                form.Value('l', 1);
            }
        }
        void WriteDifferences(int type)
        {
            Form& form = static_cast<Form&>(*this);
            if (!myHasOwn || !myKnown.insert(type).second) {
                return;
            }
            const std::size_t fields = BaseLayout(type)->Fields().size();
            if (type == type::Face) {
                form.Count(static_cast<int>(fields) + 2);
                form.Letters("CC");
                form.Letters("I");
                WriteField("imprint", 0, 0, "b");
                form.Letters(std::string(fields - 2, 'C'));
                form.Letters("A");
                WriteField("lattice", 1, 0, "");
                form.Letters("Z");
            } else if (type == type::Edge) {
                form.Count(static_cast<int>(fields) - 1);
                form.Letters(std::string(fields - 1, 'C') + "DZ");
            } else {
                form.Count(255);
            }
        }
        void WriteNode(int index, const Node& node)
        {
            Form& form = static_cast<Form&>(*this);
            const Layout& layout = *BaseLayout(node.type);
            form.Short(node.type);
            WriteDifferences(node.type);
            if (layout.HasVariable()) {
                form.Whole(static_cast<int>(node.length));
            }
            form.Pointer(index);
            const double* next = node.numbers.data();
            std::size_t number = 0;
            for (const FieldLayout& field : layout.Fields()) {
                if (myHasOwn && node.type == type::Face && number == 2) {
                    const double box[6] = {1, 2, 3, 4, 5, 6};
                    form.Group('b', 6, box);
                }
                ++number;
                if (myHasOwn && node.type == type::Edge && number == layout.Fields().size()) {
                    break;
                }
                const std::size_t times =
                    field.IsVariable() ? node.length : static_cast<std::size_t>(field.Times());
                const int size = NumbersOf(field.kind);
                for (std::size_t i = 0; i < times; ++i, next += size) {
                    if (size > 1) {
                        form.Group(field.kind, size, next);
                    } else {
                        form.Value(field.kind, *next);
                    }
                }
            }
            if (myHasOwn && node.type == type::Face) {
                form.Value('p', 0);
            }
        }

        const XtText& mySource;
        const bool myHasOwn;
        std::set<int> myKnown;
    };

    class TextForm : public Writer<TextForm>
    {
    public:
        using Writer::Writer;
        std::string Run()
        {
            myText = "T";
            Name(": TRANSMIT FILE created by a test");
            Name(Schema());
            if (std::string(Schema()).size() > 20) {
                Whole(300);
            }
            WriteNodes();
            std::string lines =
                "**ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz**\n**PART1;\nFORMAT=text;\n"
                "**END_OF_HEADER*****\n";
            for (std::size_t i = 0; i < myText.size(); i += 80) {
                lines += myText.substr(i, 80) + "\n";
            }
            return lines;
        }
        void Whole(int value) { myText += std::to_string(value) + " "; }
        void Short(int value) { Whole(value); }
        void Count(int value) { Whole(value); }
        void Pointer(int value) { Whole(value); }
        void Elements(int value) { Whole(value); }
        void Letters(const std::string& letters) { myText += letters; }
        void Name(const std::string& name) { myText += std::to_string(name.size()) + " " + name; }
        void Value(char kind, double value)
        {
            if (kind == 'c') {
                const char c = static_cast<char>(value);
                myText += c == '\\' ? "\\\\" : c == '\n' ? "\\r" : std::string(1, c);
            } else if (kind == 'l') {
                myText += value != 0 ? "T" : "F";
            } else if (std::isnan(value)) {
                myText += "?";
            } else if (kind == 'f') {
                char buffer[40];
                std::snprintf(buffer, sizeof buffer, "%.17g ", value);
                myText += buffer;
            } else {
                Whole(static_cast<int>(value));
            }
        }
        void Group(char, int size, const double* values)
        {
            for (int i = 0; i < (std::isnan(values[0]) ? 1 : size); ++i) {
                Value('f', values[i]);
            }
        }

    private:
        std::string myText;
    };

    class BinaryForm : public Writer<BinaryForm>
    {
    public:
        using Writer::Writer;
        std::string Run()
        {
            myBytes.assign("PS\0\0", 4);
            const std::string modeller = ": TRANSMIT FILE created by a test";
            const std::string schema = Schema();
            Unsigned(modeller.size(), 2);
            myBytes += modeller;
            Unsigned(schema.size(), 4);
            myBytes += schema;
            if (schema.size() > 20) {
                Short(300);
            }
            WriteNodes();
            return myBytes;
        }
        void Whole(int value) { Unsigned(static_cast<std::uint32_t>(value), 4); }
        void Short(int value) { Unsigned(static_cast<std::uint16_t>(value), 2); }
        void Count(int value) { Unsigned(static_cast<std::uint8_t>(value), 1); }
        void Pointer(int value)
        {
            constexpr int Step = 32767;
            if (value + 1 < Step) {
                Short(value + 1);
            } else {
                Short(-(value % Step + 1));
                Short(value / Step);
            }
        }
        void Elements(int value) { Pointer(value); }
        void Letters(const std::string& letters) { myBytes += letters; }
        void Name(const std::string& name)
        {
            Unsigned(name.size(), 1);
            myBytes += name;
        }
        void Value(char kind, double value)
        {
            switch (kind) {
            case 'u':
            case 'c':
            case 'l':
                return Unsigned(static_cast<std::uint8_t>(value), 1);
            case 'w':
                return Unsigned(static_cast<std::uint16_t>(value), 2);
            case 'n':
                return Short(static_cast<int>(value));
            case 'd':
                return Whole(std::isnan(value) ? -32764 : static_cast<int>(value));
            case 'p':
                return Pointer(static_cast<int>(value));
            default:
                Unsigned(std::bit_cast<std::uint64_t>(std::isnan(value) ? -3.14158e13 : value), 8);
            }
        }
        void Group(char, int size, const double* values)
        {
            for (int i = 0; i < size; ++i) {
                Value('f', values[i]);
            }
        }

    private:
        void Unsigned(std::uint64_t value, int size)
        {
            for (int i = size - 1; i >= 0; --i) {
                myBytes.push_back(static_cast<char>(value >> (8 * i) & 255));
            }
        }
        std::string myBytes;
    };

    std::vector<Node> myNodes;
};

} // namespace xttest
