// Parameters of JT_Writer. The format keeps the units of meshes and of B-Reps apart.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_WriterParameters.hxx>

namespace cadex {

class CADEX_EXPORT JT_WriterParameters : public Base_WriterParameters
{
public:
    enum FileSplitModeType
    {
        Monolithic, ///< one file for the whole model
        PerPart,    ///< the main file holds the structure, part files lie in a subfolder of the same name
        Shattered   ///< every part and every assembly in a file of its own
    };

    JT_WriterParameters() = default;
    void SetFileSplitMode(FileSplitModeType theMode) { myMode = theMode; }
    FileSplitModeType FileSplitMode() const { return myMode; }

    /// Unit of the meshes in the file.
    Base_LengthUnit PolyRepresentationUnit() const { return myPolyUnit; }
    Base_LengthUnit& PolyRepresentationUnit() { return myPolyUnit; }

private:
    FileSplitModeType myMode = Monolithic;
    Base_LengthUnit myPolyUnit = Base_LU_Millimeters;
};

} // namespace cadex
