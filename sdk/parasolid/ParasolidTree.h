// The model that Parasolid data become: assemblies with instances, a part for each body.
#pragma once

#include <optional>
#include <string_view>

#include <cadex/ModelData_Model.hxx>

#include "sdk/parasolid/XtFile.h"

namespace cadex::parasolid {

/// A file that has been read.
class ParasolidFile
{
public:
    /// False, with the reason among the reports, when the bytes are damaged or none of this format. Call it
    /// inside the engine's guard.
    bool Load(std::string_view bytes, const Base_UTF16String& name);

    /// Appends one root: the assembly of the file where it has one that holds all; else one that is named as
    /// the file, with an instance for each body and assembly. Bodies without a name are "Body 1" and on.
    void Build(ModelData_Model& model);

private:
    std::optional<XtContents> myContents;
    Base_UTF16String myName;
};

} // namespace cadex::parasolid
