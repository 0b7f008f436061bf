// From the entities of an IGES file to the model.
#pragma once

#include <cadex/Base_UTF16String.hxx>
#include <cadex/ModelData_Model.hxx>

#include "sdk/iges/IgesText.h"

class IGESControl_Reader;

namespace cadex::iges {

/// Appends one root to the model. IGES knows entities rather than products; what a user of a scene expects is
/// made of them like this:
///
/// - a solid (186) is a part;
/// - a named group (402) is a part, or an assembly when there are named groups, solids or subfigures in it;
/// - a subfigure (308) is a part or an assembly likewise, and its instances (408) share it, with their
///   translation, scale and matrix, mirrored ones included;
/// - all other geometry of a group, or of the file, is one part: loose faces and curves by the thousand are
///   one body;
/// - groups without a name are looked through.
///
/// A file that makes a single part or assembly has that as its root; else the root is an assembly named after
/// the file. Colours are those of the entities; names are those of name properties (406 form 15) and of
/// subfigures. The root carries the global section as properties. False when there is nothing.
///
/// Runs under the engine's guard; the reader has read the file.
/// Entities that need one of the unusable ones are left out; these, and those of which the kernel makes
/// nothing, are reported.
bool BuildIgesModel(IGESControl_Reader& reader, const Findings& findings, const Base_UTF16String& fileName,
                    ModelData_Model& model);

} // namespace cadex::iges
