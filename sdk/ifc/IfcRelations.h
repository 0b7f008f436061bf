// Who belongs to whom: the relation objects of a file, turned round so that they can be asked from the
// object.
#pragma once

#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "sdk/ifc/IfcFile.h"

namespace cadex::ifc {

using IdLists = std::unordered_map<Id, std::vector<Id>>;
using IdMap = std::unordered_map<Id, Id>;

struct Relations
{
    explicit Relations(const IfcFile& file);

    IdLists children;                 ///< by aggregation, nesting and containment, in the order of the file
    std::unordered_set<Id> hasParent; ///< objects that are somebody's child, and openings
    IdLists openings;                 ///< element -> what is cut out of it
    IdLists propertySets;             ///< object -> property sets and quantity sets
    IdMap typeOf;                     ///< object -> its type object
    IdMap typeOfMap;                  ///< representation map -> the type object that owns it
    IdMap materialOf;                 ///< object or type object -> material, layer set, ...
    IdMap styleOf;                    ///< representation item -> the styled item that points at it
    IdMap coloursOf;                  ///< tessellated face set -> IfcIndexedColourMap
    IdLists materialStyles;           ///< material -> its styled representations
    std::vector<Id> projects;
    std::vector<Id> objects; ///< everything that has the shape of an IfcProduct, in the order of the file

    const std::vector<Id>& List(const IdLists& lists, Id id) const;
    static Id Find(const IdMap& map, Id id);

private:
    void Add(const Entity& relation);
    void AddObject(const IfcFile& file, const IfcFile::Record& record);
};

} // namespace cadex::ifc
