// The model that a SAT file becomes: one assembly of the file, with a part for each body.
#pragma once

#include <optional>
#include <string>

#include <cadex/ModelData_Model.hxx>

#include "sdk/acis/AcisRecords.h"

namespace cadex::acis {

/// A file in memory.
class AcisFile
{
public:
    AcisFile() = default;
    AcisFile(const AcisFile&) = delete;
    AcisFile& operator=(const AcisFile&) = delete;

    /// False, with the reason among the reports, when the file is damaged or none of this format. Call it
    /// inside the engine's guard.
    bool Load(std::string bytes, const Base_UTF16String& name);

    /// Appends one root, named as the file, with an instance of a part for each body: named by the body,
    /// placed by its transform, coloured by body and faces, with the body's attributes as properties.
    void Build(ModelData_Model& model);

private:
    std::string myBytes;
    std::optional<Records> myRecords; ///< views into the bytes
    Base_UTF16String myName;
};

} // namespace cadex::acis
