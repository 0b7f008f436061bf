// An IFC file in memory: clear text (sdk/part21) with the schema's types, and a view of its instances by
// position. Arguments are read from the text when they are asked for.
//
//     IfcFile file;
//     if (!file.Load(std::move(text))) { ... not an IFC file, or a damaged one ... }
//     const Entity wall = file.Get(4711);
//     if (wall.Is(Type::Other) && wall.Ref(5)) { const Entity placement = wall.Ref(5); ... }
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <cadex/Base_UTF16String.hxx>

#include "sdk/ifc/IfcTypes.h"
#include "sdk/part21/ClearText.h"

namespace cadex::ifc {

using Id = std::uint32_t; ///< number of an instance ("#12"); 0 is none

class IfcFile;

/// One instance with its arguments, a cheap view that must not outlive its file. A null entity (no such
/// instance) answers every question with the fallback, and so does an argument that is missing, unset ("$",
/// "*") or of another kind than asked for: a damaged reference is an unset one.
class Entity
{
public:
    static constexpr std::size_t MaxArguments = 32; ///< more than any entity of the schemas has

    Entity() = default;

    explicit operator bool() const { return myFile != nullptr; }
    ifc::Type Type() const { return myType; }
    bool Is(ifc::Type type) const { return myType == type; }
    ifc::Id Id() const { return myId; }
    std::string_view TypeName() const { return myTypeName; } ///< upper case, as in the file

    std::size_t Size() const { return myCount; }
    std::string_view Raw(std::size_t index) const
    {
        return index < myCount ? myArguments[index] : std::string_view();
    }
    bool IsSet(std::size_t index) const;
    /// Numbers also out of a typed value: IFCREAL(2.5).
    double Real(std::size_t index, double fallback = 0) const;
    std::int64_t Integer(std::size_t index, std::int64_t fallback = 0) const;
    bool Boolean(std::size_t index, bool fallback) const;
    /// Without the dots: "DIFFERENCE".
    std::string_view Enumeration(std::size_t index) const;
    Base_UTF16String Text(std::size_t index) const;
    Entity Ref(std::size_t index) const;
    ifc::Id RefId(std::size_t index) const;
    /// The references in a list, also in nested ones; other items are skipped.
    std::vector<ifc::Id> Refs(std::size_t index) const;
    /// The numbers in a list, also in nested ones.
    std::vector<double> Reals(std::size_t index) const;

    const IfcFile& File() const { return *myFile; }

private:
    friend class IfcFile;
    const IfcFile* myFile = nullptr;
    ifc::Type myType = ifc::Type::Other;
    ifc::Id myId = 0;
    std::string_view myTypeName;
    std::size_t myCount = 0;
    std::array<std::string_view, MaxArguments> myArguments;
};

class IfcFile
{
public:
    using Record = part21::ClearText::Record;

    /// False, with the reason reported, when the text is no exchange structure, is cut off, or its schema is
    /// not one of IFC. A reference to an instance that is not there is no damage; it reads as unset.
    bool Load(std::string text);

    /// "IFC2X3", "IFC4" ... as the header says, in upper case.
    const std::string& Schema() const { return mySchema; }
    std::size_t Count() const { return myText.Count(); }
    std::size_t TextSize() const { return myText.Bytes().size(); }

    /// Calls back for each instance, ascending by id.
    template <typename Visit>
    void ForEach(const Visit& visit) const
    {
        myText.ForEachByNumber(visit);
    }

    /// All instances of exactly this type, ascending.
    std::vector<Id> IdsOf(ifc::Type type) const;

    Entity Get(Id id) const;
    Entity At(const Record& record) const;
    /// The type of an instance without splitting its arguments; Other when it is not there.
    ifc::Type TypeOf(Id id) const;
    ifc::Type TypeOf(const Record& record) const { return myTypes[record.type]; }

private:
    part21::ClearText myText;
    std::string mySchema;
    std::vector<ifc::Type> myTypes; ///< by the text's number of the type
};

/// Walks the items of a list "(1.5,#3,('a',$))" at its own level.
class ListReader
{
public:
    explicit ListReader(std::string_view list);
    bool Next(std::string_view& item);

private:
    part21::Cursor myCursor;
};

/// Appends the numbers of a list, nested ones flattened.
void ReadNumbers(std::string_view list, std::vector<double>& numbers);
/// The number that the text is, also with a type name around it.
bool ReadNumber(std::string_view text, double& value);
/// "#12" -> 12; 0 when the text is no reference.
Id ReadReference(std::string_view text);
/// Type name and content of a typed value "IFCLABEL('x')"; the name is empty for a bare value.
struct TypedValue
{
    std::string_view type;
    std::string_view value;
};
TypedValue ReadTyped(std::string_view text);
/// A string with its quotes; see part21::DecodeString.
Base_UTF16String ReadString(std::string_view quoted);

} // namespace cadex::ifc
