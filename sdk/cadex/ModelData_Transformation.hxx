// Placement: rotation, translation and one uniform factor.
//
//     p' = scale * (R * p + T)
//
// The factor scales the whole placement, the translation included: a factor of 1000 on a top-level instance
// turns a model of metres into one of millimetres.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelData_Vector.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_Transformation
{
public:
    ModelData_Transformation() = default; ///< identity

    /// True when rotation, translation and factor are exactly those of the identity.
    bool IsIdentity() const;

    /// Row by row. A rotation with determinant 1 is expected; any other matrix is kept as given.
    void SetRotationPart(double theV00, double theV01, double theV02, double theV10, double theV11,
                         double theV12, double theV20, double theV21, double theV22);
    /// Keeps rotation and factor. Millimetres before the factor is applied.
    void SetTranslationPart(double theX, double theY, double theZ);
    void SetTranslationPart(const ModelData_Vector& theVec);
    void SetScaleFactor(double theScale) { myScale = theScale; }
    double ScaleFactor() const { return myScale; }

    /// The matrix of the whole placement: scale * R(i, j) for j < 3, scale * T(i) for j = 3; i in 0..2, else
    /// undefined.
    double Data(int i, int j) const { return myScale * (j < 3 ? myRotation[3 * i + j] : myTranslation[i]); }
    void Transform(double& theX, double& theY, double& theZ) const;

private:
    double myRotation[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    double myTranslation[3] = {0, 0, 0};
    double myScale = 1;
};

} // namespace cadex
