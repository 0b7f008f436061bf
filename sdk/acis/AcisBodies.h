// The bodies of a SAT file as descriptions, with their looks, names and places.
//
//     Records records(bytes);
//     for (FileBody& body : ReadBodies(records)) { ... body.description ... }
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include <cadex/Base_UTF16String.hxx>

#include "sdk/acis/AcisRecords.h"
#include "sdk/brep/Description.h"

namespace cadex::acis {

/// An affine placement: rows of a 3 x 4 matrix, the last column in millimetres.
using Matrix = std::array<double, 12>;

struct FileBody
{
    int record = None; ///< None: faces that belong to no body
    brep::Description description;
    std::optional<Matrix> placement;
    Base_UTF16String name; ///< empty when the file gives none
    /// Named texts and numbers that are attached to the body.
    std::vector<std::pair<Base_UTF16String, Base_UTF16String>> properties;
    std::size_t lostFaces = 0; ///< that make no sense and are not in the description
    /// Place of an earlier body that is equal but for its name and placement; then there is no description.
    std::optional<std::size_t> twin;
};

/// In the order of the file. Every record is taken once, however records point at each other.
std::vector<FileBody> ReadBodies(const Records& records);

} // namespace cadex::acis
