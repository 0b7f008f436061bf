// Colour: sRGB components and alpha (1 is opaque), each meant to lie in 0..1 and kept as given.
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>

namespace cadex {

class CADEX_EXPORT ModelData_Color
{
public:
    typedef float ValueType;
    typedef float value_type;

    constexpr ModelData_Color() = default; ///< opaque black
    constexpr ModelData_Color(float theR, float theG, float theB, float theA = 1.f)
        : myValues{theR, theG, theB, theA}
    {
    }
    /// Components 0..255.
    constexpr ModelData_Color(int theR, int theG, int theB, int theA = 255)
        : myValues{static_cast<float>(theR) / 255.f, static_cast<float>(theG) / 255.f,
                   static_cast<float>(theB) / 255.f, static_cast<float>(theA) / 255.f}
    {
    }
    /// 0xAARRGGBB.
    explicit constexpr ModelData_Color(int theARGB)
        : ModelData_Color((theARGB >> 16) & 0xff, (theARGB >> 8) & 0xff, theARGB & 0xff,
                          (theARGB >> 24) & 0xff)
    {
    }

    constexpr float R() const { return myValues[0]; }
    constexpr float& R() { return myValues[0]; }
    constexpr float G() const { return myValues[1]; }
    constexpr float& G() { return myValues[1]; }
    constexpr float B() const { return myValues[2]; }
    constexpr float& B() { return myValues[2]; }
    constexpr float A() const { return myValues[3]; }
    constexpr float& A() { return myValues[3]; }

    /// 0 = R, 1 = G, 2 = B, 3 = A; else undefined.
    const value_type& Value(std::size_t theIndex) const { return myValues[theIndex]; }
    const value_type& operator[](std::size_t theIndex) const { return myValues[theIndex]; }
    value_type& operator[](std::size_t theIndex) { return myValues[theIndex]; }
    void SetValue(int theIndex, const value_type& theValue) { myValues[theIndex] = theValue; }

    /// True when every component lies in 0..1.
    bool IsValid() const;

    friend constexpr bool operator==(const ModelData_Color&, const ModelData_Color&) = default;

private:
    float myValues[4] = {0.f, 0.f, 0.f, 1.f};
};

} // namespace cadex
