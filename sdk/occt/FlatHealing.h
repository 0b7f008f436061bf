// Skips shape healing where it has nothing to heal.
#pragma once

#include <Standard_Handle.hxx>
#include <XSAlgo_AlgoContainer.hxx>

class TopoDS_Shape;

namespace cadex::occt {

/// While an object of this class lives, shapes whose faces are all planes and whose edges are all lines come
/// out of the IGES translator as they were built; all others are healed as usual. Healing is about
/// half the time of an import, and on flat shapes it changes neither triangles nor volume. Process-wide:
/// needs the engine's lock.
class FlatHealing
{
public:
    FlatHealing();
    ~FlatHealing();
    FlatHealing(const FlatHealing&) = delete;
    FlatHealing& operator=(const FlatHealing&) = delete;

private:
    Handle(XSAlgo_AlgoContainer) mySaved;
};

/// True when every face of the shape lies on a plane between straight edges, with one wire around its
/// material and the others around holes. Files whose loops run against their planes are common: those shapes
/// must be healed.
bool IsFlat(const TopoDS_Shape& shape);

} // namespace cadex::occt
