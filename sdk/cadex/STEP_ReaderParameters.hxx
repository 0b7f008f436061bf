// Parameters of STEP_Reader.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_ReaderParameters.hxx>

namespace cadex {

class CADEX_EXPORT STEP_ReaderParameters : public Base_ReaderParameters
{
public:
    /// Which of several representations of one part is read.
    enum BRepRepresentationType
    {
        Auto,               ///< the most fitting one
        All,                ///< the main one and every one related to it
        AdvancedBRep,       ///< solid bodies
        ManifoldSurface,    ///< sheet bodies made of shells
        NonManifoldSurface, ///< sheet bodies made of faces
        EdgeBasedWireframe  ///< wireframe bodies
    };

    STEP_ReaderParameters() = default;
    BRepRepresentationType PreferredBRepRepresentationType() const { return myType; }
    BRepRepresentationType& PreferredBRepRepresentationType() { return myType; }

private:
    BRepRepresentationType myType = Auto;
};

} // namespace cadex
