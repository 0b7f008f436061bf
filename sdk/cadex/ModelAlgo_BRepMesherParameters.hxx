// How finely B-Reps are meshed.
#pragma once

#include <cadex/Base_Export.hxx>

namespace cadex {

class CADEX_EXPORT ModelAlgo_BRepMesherParameters
{
public:
    /// Presets of chord (relative) and angle.
    enum Granularity
    {
        Coarse, ///< 0.05, 60 degrees
        Medium, ///< 0.01, 45 degrees
        Fine,   ///< 0.004, 20 degrees
        Custom  ///< set by the caller
    };

    /// `theMergeFaceSets`: the triangle sets of a body's faces are joined into one connected, watertight mesh
    /// (one for each appearance) instead of one for each face.
    ModelAlgo_BRepMesherParameters(Granularity theGranularity = Fine, bool theMergeFaceSets = true);
    ModelAlgo_BRepMesherParameters(const ModelAlgo_BRepMesherParameters&) = default;
    ModelAlgo_BRepMesherParameters& operator=(const ModelAlgo_BRepMesherParameters&) = default;

    /// Largest distance between curve or surface and mesh: a fraction of the bounding box when relative (the
    /// default), else millimetres. Setting it, or the angle, makes the granularity Custom.
    void SetChordalDeflection(double theChord);
    double ChordalDeflection() const { return myChord; }
    /// Largest angle between neighbouring facets, in radians.
    void SetAngularDeflection(double theAngle);
    double AngularDeflection() const { return myAngle; }
    void SetIsRelativeChordalDeflection(bool theIsRelative) { myIsRelative = theIsRelative; }
    bool IsRelativeChordalDeflection() const { return myIsRelative; }
    /// Custom keeps chord and angle as they are.
    void SetGranularity(Granularity theGranularity);
    Granularity GetGranularity() const { return myGranularity; }
    bool MergeFaceSets() const { return myMergeFaceSets; }
    bool& MergeFaceSets() { return myMergeFaceSets; }

private:
    Granularity myGranularity = Fine;
    double myChord = 0;
    double myAngle = 0;
    bool myIsRelative = true;
    bool myMergeFaceSets = true;
};

} // namespace cadex
