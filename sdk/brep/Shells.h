// Which shells of a description are closed, and which of several is the outer one of a solid.
//
//     ClosedShells closed(description);
//     if (closed.Has(shell)) { ... }
//     description.solids.push_back(SolidOf(description, {shell, otherShell}));
#pragma once

#include <vector>

#include "sdk/brep/Description.h"

namespace cadex::brep {

/// The description must outlive it, and keep its edges.
class ClosedShells
{
public:
    explicit ClosedShells(const Description& description)
        : myDescription(description), myUses(description.edges.size())
    {
    }

    /// Whether the faces of the shell use each of their edges an even number of times.
    bool Has(int shell);

private:
    const Description& myDescription;
    std::vector<int> myUses; ///< by edge; zero between calls
};

/// The largest of the shells is the outer one; there must be one at least.
Solid SolidOf(const Description& description, std::vector<int> shells);

} // namespace cadex::brep
