// Bodies of flat faces between sections: sweeps along ways that are long, narrow or bent in space, where the
// kernel takes minutes or fails, and solids that are given by their sections.
#pragma once

#include <vector>

#include "sdk/ifc/IfcFacets.h"
#include "sdk/ifc/IfcProfiles.h"

namespace cadex::ifc {

/// The outline of one section and its holes, each as many points as in the sections before it, running
/// counter-clockwise (holes: clockwise) seen against the way of the sweep.
using Section = std::vector<std::vector<gp_XYZ>>;

/// A region as a section in its own plane; curves become chords.
Section SectionOf(const Context& context, const Region& region);
/// Each point this share of the way from one section to the other. Unbuildable when they do not fit.
Section Mixed(const Section& from, const Section& to, double share);

/// Faces between neighbouring sections, and caps; `ring` closes the last section with the first instead.
/// Unbuildable when the sections do not fit each other.
Polyhedron Loft(const std::vector<Section>& sections, bool ring);

/// The region, which stands at the start of the path in the frame `start`, carried along it with mitred
/// corners; the frame's x axis keeps to `upright` if that is given, else the region turns no more than the
/// path does. Curves become chords.
Polyhedron LoftAlong(Context& context, const Path& path, const Region& region, const Affine& start,
                     const gp_XYZ* upright);

} // namespace cadex::ifc
