// Which bodies of a file are equal, so that each is made once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "sdk/acis/AcisRecords.h"

namespace cadex::acis {

/// For each body, given by its record, the first one whose records say the same: topology, geometry,
/// attributes of faces and edges, but not the placement, and not the attributes of the body itself. What has
/// no record (None) has no twin. `sizes` are how many records of one kind the bodies have: those of different
/// sizes are not compared. Takes time for bodies alone of which another has the size.
std::vector<std::size_t> FindTwins(const Records& records, const std::vector<int>& bodies,
                                   const std::vector<std::size_t>& sizes,
                                   const std::function<std::uint64_t(int)>& lookOf);

} // namespace cadex::acis
