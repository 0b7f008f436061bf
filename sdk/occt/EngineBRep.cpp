#include "sdk/occt/EngineBRep.h"

namespace cadex::occt {

const std::optional<MassProperties>& EngineBRep::Mass() const
{
    if (!myIsMassKnown) {
        myMass = IntegrateMass();
        myIsMassKnown = true;
    }
    return myMass;
}

} // namespace cadex::occt
