// Whether the rings of a face seem to cross: the cheap question before the kernel's thorough one.
#pragma once

#include "sdk/brep/ResolvedFace.h"

namespace cadex::brep {

/// By the outlines of the rings, with curves as chords: true may be a mistake where curves run close to each
/// other, false hardly. In about linear time.
bool DoRingsSeemToCross(const Body& body, const ResolvedFace& face);

} // namespace cadex::brep
