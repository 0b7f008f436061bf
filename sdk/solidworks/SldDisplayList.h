// The display list of a SolidWorks file: the triangles of every face as they were on the screen when the file
// was saved, with the looks and names of bodies, and in assemblies the components that they belong to.
//
//     const DisplayList list(std::move(stream));
//     for (const DisplayComponent& component : list.Components()) { ... component.bodies ... }
//
// The stream is a tree of objects, few of which are known. So what is known is looked for by its form: arrays
// of triangle strips, names of components with a placement behind them, looks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <cadex/Base_UTF16String.hxx>

#include "sdk/model/AppearanceCache.h"
#include "sdk/solidworks/SldAssembly.h"

namespace cadex::solidworks {

struct DisplayLook
{
    internal::Colour colour;
    Base_UTF16String material; ///< as the program names it; may be empty
};

/// Views into the stream.
struct DisplayFace
{
    std::string_view strips;  ///< corners of each triangle strip, 4 bytes each
    std::string_view points;  ///< three floats each, metres
    std::string_view normals; ///< none, or one for each point
    std::optional<DisplayLook> look;
};

struct DisplayBody
{
    Base_UTF16String name; ///< may be empty
    std::optional<DisplayLook> look;
    std::vector<DisplayFace> faces;
};

struct DisplayComponent
{
    std::string name;  ///< "Wheel-2@Car", below others "Axle-1@Car/Wheel-2@Axle"; empty in a part
    std::string model; ///< name of the part or assembly
    std::string configuration;
    Matrix placement = Identity; ///< in the document
    /// Those of equal parts stand with the first of them.
    std::vector<DisplayBody> bodies;
};

class DisplayList
{
public:
    explicit DisplayList(std::string bytes);
    DisplayList(const DisplayList&) = delete;
    DisplayList& operator=(const DisplayList&) = delete;

    /// In a part: one without a name. None when nothing is displayed.
    const std::vector<DisplayComponent>& Components() const { return myComponents; }
    /// Of a part as a whole.
    const std::optional<DisplayLook>& Look() const { return myLook; }

private:
    std::string myBytes;
    std::vector<DisplayComponent> myComponents;
    std::optional<DisplayLook> myLook;
};

} // namespace cadex::solidworks
