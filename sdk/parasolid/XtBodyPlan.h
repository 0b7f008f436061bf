// Where the nodes of one written body stand in a Parasolid transmit file.
//
//     XtBodyPlan plan(part, part.bodies.front());
//     int next = plan.Place(1);
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "sdk/mesh/FlatPart.h"

namespace cadex::parasolid {

/// The nodes of one kind follow each other, whatever the shell. The part and the body must outlive the plan.
struct XtBodyPlan
{
    const mesh::FlatPart& part;
    const mesh::FlatBody& source;
    std::u16string name;
    int instance = 0; ///< that places the body; 0: none
    int body = 0;
    int regions = 0; ///< the outer void, the solid, one for each cavity
    int shells = 0;  ///< of the solid, then of the voids; one of a sheet
    int faces = 0;
    int loops = 0;
    int fins = 0;
    int lonely = 0; ///< fins of no loop, beside those that are the only ones of their edges
    int edges = 0;
    int vertices = 0;
    int planes = 0;
    int lines = 0;
    int points = 0;
    int chains = 0; ///< the list of attributes, if there are any, and its block
    int looks = 0;  ///< attributes and their values: colour, name, colours of faces
    int highestId = 0;

    /// How many of a kind stand before those of a shell; behind the last one, how many there are.
    struct Offsets
    {
        int faces = 0;
        int loops = 0;
        int fins = 0;
        int lonely = 0;
        int edges = 0;
        int vertices = 0;
    };
    std::vector<Offsets> offsets;
    int colouredFaces = 0;

    bool HasColour() const { return part.BodyColour().has_value(); }
    bool HasName() const { return !name.empty(); }
    int LookCount() const { return (HasColour() ? 1 : 0) + (HasName() ? 1 : 0) + colouredFaces; }
    int NameLook() const { return looks + (HasColour() ? 2 : 0); }
    int FaceLooks() const { return NameLook() + (HasName() ? 2 : 0); }
    int ShellCount() const { return static_cast<int>(source.shells.size()); }
    int SolidShell(std::size_t shell) const { return shells + static_cast<int>(shell); }
    int VoidShell(std::size_t shell) const
    {
        return source.isClosed ? shells + ShellCount() + static_cast<int>(shell) : shells;
    }
    const Offsets& Total() const { return offsets.back(); }

    XtBodyPlan(const mesh::FlatPart& flat, const mesh::FlatBody& own);

    /// Whether no other face meets there.
    static bool IsLonely(const mesh::PolygonBody::Coedge& coedge)
    {
        return coedge.partner == mesh::PolygonBody::NoIndex;
    }

    /// Gives every node its index, from `first` on; gives the index behind the last one.
    int Place(int first);
};

} // namespace cadex::parasolid
