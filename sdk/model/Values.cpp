#include <cadex/ModelAlgo_BRepMesherParameters.hxx>
#include <cadex/ModelData_Box.hxx>
#include <cadex/ModelData_Color.hxx>
#include <cadex/ModelData_Transformation.hxx>

#include <algorithm>
#include <limits>
#include <numbers>

namespace cadex {

namespace {

constexpr double Far = std::numeric_limits<double>::max();

struct Preset
{
    double chord;
    double degrees;
};

// In the order of the enumerators Coarse, Medium, Fine.
constexpr Preset Presets[] = {{0.05, 60}, {0.01, 45}, {0.004, 20}};

} // namespace

ModelData_Box::ModelData_Box() : myMin(Far, Far, Far), myMax(-Far, -Far, -Far) {}

ModelData_Box::ModelData_Box(const ModelData_Pointd& theCorner1, const ModelData_Pointd& theCorner2)
    : ModelData_Box()
{
    Add(theCorner1);
    Add(theCorner2);
}

void ModelData_Box::Add(const ModelData_Point& thePoint)
{
    myMin = ModelData_Point(std::min(myMin.X(), thePoint.X()), std::min(myMin.Y(), thePoint.Y()),
                            std::min(myMin.Z(), thePoint.Z()));
    myMax = ModelData_Point(std::max(myMax.X(), thePoint.X()), std::max(myMax.Y(), thePoint.Y()),
                            std::max(myMax.Z(), thePoint.Z()));
}

bool ModelData_Color::IsValid() const
{
    return std::all_of(myValues, myValues + 4, [](float value) { return value >= 0.f && value <= 1.f; });
}

bool ModelData_Transformation::IsIdentity() const
{
    for (int i = 0; i < 9; ++i) {
        if (myRotation[i] != (i % 4 == 0 ? 1. : 0.)) {
            return false;
        }
    }
    return myTranslation[0] == 0 && myTranslation[1] == 0 && myTranslation[2] == 0 && myScale == 1;
}

void ModelData_Transformation::SetRotationPart(double theV00, double theV01, double theV02, double theV10,
                                               double theV11, double theV12, double theV20, double theV21,
                                               double theV22)
{
    const double values[9] = {theV00, theV01, theV02, theV10, theV11, theV12, theV20, theV21, theV22};
    std::copy(values, values + 9, myRotation);
}

void ModelData_Transformation::SetTranslationPart(double theX, double theY, double theZ)
{
    myTranslation[0] = theX;
    myTranslation[1] = theY;
    myTranslation[2] = theZ;
}

void ModelData_Transformation::SetTranslationPart(const ModelData_Vector& theVec)
{
    SetTranslationPart(theVec.X(), theVec.Y(), theVec.Z());
}

void ModelData_Transformation::Transform(double& theX, double& theY, double& theZ) const
{
    const double x = theX;
    const double y = theY;
    const double z = theZ;
    theX = Data(0, 0) * x + Data(0, 1) * y + Data(0, 2) * z + Data(0, 3);
    theY = Data(1, 0) * x + Data(1, 1) * y + Data(1, 2) * z + Data(1, 3);
    theZ = Data(2, 0) * x + Data(2, 1) * y + Data(2, 2) * z + Data(2, 3);
}

ModelAlgo_BRepMesherParameters::ModelAlgo_BRepMesherParameters(Granularity theGranularity,
                                                               bool theMergeFaceSets)
    : myMergeFaceSets(theMergeFaceSets)
{
    SetGranularity(Fine); // the values that Custom starts from
    SetGranularity(theGranularity);
}

void ModelAlgo_BRepMesherParameters::SetChordalDeflection(double theChord)
{
    myChord = theChord;
    myGranularity = Custom;
}

void ModelAlgo_BRepMesherParameters::SetAngularDeflection(double theAngle)
{
    myAngle = theAngle;
    myGranularity = Custom;
}

void ModelAlgo_BRepMesherParameters::SetGranularity(Granularity theGranularity)
{
    myGranularity = theGranularity;
    if (theGranularity >= Coarse && theGranularity < Custom) {
        myChord = Presets[theGranularity].chord;
        myAngle = Presets[theGranularity].degrees * std::numbers::pi / 180;
    }
}

} // namespace cadex
