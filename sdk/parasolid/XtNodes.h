// The nodes of a Parasolid transmit file, text or neutral binary, with fixed or embedded schema. All values
// are numbers: characters by their codes, logicals 0 and 1, pointers the indices of nodes, nulls NaN.
//
//     const Nodes nodes(bytes);                              // throws Unreadable
//     for (Node face = nodes.At(shell.Pointer(Field::Face)); face; face =
//     nodes.At(face.Pointer(Field::Next)))
//         ... nodes.At(face.Pointer(Field::Surface)).Type() ...
//
// A chain of a file may have no end: who follows one keeps count (see Nodes::Size).
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <gp_XYZ.hxx>

#include "sdk/parasolid/XtSchema.h"

namespace cadex::parasolid {

/// Why a file is refused.
class Unreadable : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A node, or none: then no field is there. Valid as long as the nodes are.
class Node
{
public:
    Node() = default;
    Node(const Layout& layout, std::span<const double> numbers, int type, int index)
        : myLayout(&layout), myNumbers(numbers), myType(type), myIndex(index)
    {
    }

    explicit operator bool() const { return myLayout != nullptr; }
    int Type() const { return myType; }
    int Index() const { return myIndex; } ///< 0: none

    /// NaN when there is no such field or it is null.
    double Number(Field field, int place = 0) const;
    /// `ifNull` also for what is no whole number of 32 bits.
    int Integer(Field field, int ifNull = 0) const;
    bool IsTrue(Field field) const { return Number(field) == 1; }
    char Character(Field field) const { return static_cast<char>(Integer(field)); }
    /// Index of a node, which need not be there; 0 for null.
    int Pointer(Field field, int place = 0) const;
    gp_XYZ Vector(Field field) const;
    /// All numbers of a field, those of the last field as many as the node has.
    std::span<const double> All(Field field) const;

private:
    const Layout* myLayout = nullptr;
    std::span<const double> myNumbers;
    int myType = 0;
    int myIndex = 0;
};

class Nodes
{
public:
    /// Bytes in front of the transmitted part (a header of lines) are passed over. Bytes behind its end are
    /// not looked at.
    explicit Nodes(std::string_view bytes);

    std::size_t Size() const { return myEntries.size(); }
    Node operator[](std::size_t place) const; ///< in the order of the file
    Node At(int index) const;                 ///< by the index that pointers have

    /// Which program or version of the modeller wrote the file, and its schema.
    const std::string& Modeller() const { return myModeller; }
    const std::string& Schema() const { return mySchema; }

private:
    template <typename Source>
    friend class NodeReader;

    struct Entry
    {
        const Layout* layout;
        std::size_t first; ///< number
        std::uint32_t count;
        std::int32_t index;
        int type;
    };

    void Index();

    std::string myModeller;
    std::string mySchema;
    std::deque<Layout> myOwnLayouts; ///< of this file
    std::vector<Entry> myEntries;
    std::vector<double> myNumbers;
    std::unordered_map<int, std::uint32_t> mySparse; ///< place by index, where indices are far apart
    std::vector<std::uint32_t> myPlaces;             ///< place + 1 by index
};

} // namespace cadex::parasolid
