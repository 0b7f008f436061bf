// JT files in memory: read, and taken apart.
#pragma once

#include <optional>
#include <sstream>
#include <string>

#include <cadex/JT_Reader.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/internal/Reports.hxx>

#include "tests/sdk/ReadModels.h"

namespace jttest {

/// Nothing when the file is refused. Bodies are not meshed.
inline std::optional<cadex::ModelData_Model> Read(const std::string& bytes)
{
    cadex::JT_Reader reader;
    std::istringstream stream(bytes);
    cadex::ModelData_Model model;
    if (!reader.ReadFile(stream) || !reader.Transfer(model)) {
        return std::nullopt;
    }
    return model;
}

} // namespace jttest
