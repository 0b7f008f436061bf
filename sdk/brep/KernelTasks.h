// Work on the faces of a body: each apart from the others, on several threads where that pays, and with the
// kernel's refusals caught.
#pragma once

#include <cstddef>
#include <functional>

namespace cadex::brep {

/// Runs the work for 0 .. count - 1, in any order; on several threads when there is much of it and
/// `isParallel`.
void ForEach(std::size_t count, bool isParallel, const std::function<void(std::size_t)>& work);

/// False when the kernel refuses; processor faults inside it count as refusals.
bool Try(const std::function<void()>& work);

} // namespace cadex::brep
