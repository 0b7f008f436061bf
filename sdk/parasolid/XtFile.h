// Bodies and assemblies of Parasolid transmit data: whole files, and the streams inside of other formats.
//
//     XtContents contents = ReadXt(bytes);       // text, or binary from "PS\0\0" on; throws Unreadable
//     for (XtBody& body : contents.bodies) { ... std::move(body.description) ... }
//
// Call it inside the engine's guard. Everything is in millimetres.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <cadex/Base_UTF16String.hxx>
#include <cadex/ModelData_Part.hxx>

#include "sdk/brep/DescribedPart.h"
#include "sdk/parasolid/XtNodes.h"

namespace cadex::parasolid {

/// An affine placement: rows of a 3 x 4 matrix, the last column in millimetres.
using XtMatrix = std::array<double, 12>;

using XtProperties = brep::Texts;

struct XtBody
{
    int node = 0;
    /// With colours of body and faces; empty for a body without faces or curves (a single point).
    brep::Description description;
    Base_UTF16String name; ///< empty when the file gives none
    XtProperties properties;
    std::size_t faces = 0;     ///< of the file
    std::size_t lostFaces = 0; ///< of these, that could not be described
    std::size_t lostCurves = 0;
};

/// A body or an assembly.
struct XtElement
{
    std::size_t number = 0; ///< in `bodies` or `assemblies`
    bool isAssembly = false;
};

struct XtInstance
{
    XtElement element;
    std::optional<XtMatrix> placement = {};
    Base_UTF16String name = {};
    ModelData_Appearance appearance = {}; ///< null: that of the element
};

struct XtAssembly
{
    int node = 0;
    Base_UTF16String name;
    ModelData_Appearance appearance;
    XtProperties properties;
    std::vector<XtInstance> instances; ///< none leads back to the assembly that it is in
};

struct XtContents
{
    std::vector<XtBody> bodies;
    std::vector<XtAssembly> assemblies;
    std::vector<XtElement> roots; ///< what no assembly uses, in the order of the file
    std::size_t lostInstances = 0;
    std::string modeller; ///< which version of it wrote the data
    std::string schema;
};

/// True where transmit data may begin: a cheap look at the first bytes.
bool IsXt(std::string_view bytes);

XtContents ReadXt(std::string_view bytes);

/// The body as a part, with its look, properties and exact representation. What was lost is reported. A null
/// part when the body is empty.
ModelData_Part MakePart(XtBody&& body, const Base_UTF16String& name);

} // namespace cadex::parasolid
