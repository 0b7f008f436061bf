// JT files in memory: written and read.
#pragma once

#include <optional>
#include <sstream>
#include <string>

#include <cadex/JT_Reader.hxx>
#include <cadex/JT_Writer.hxx>
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

/// The file of a model; empty on failure.
inline std::string Written(const cadex::ModelData_Model& model,
                           cadex::Base_LengthUnit unit = cadex::Base_LU_Millimeters)
{
    cadex::JT_Writer writer;
    writer.Parameters().PolyRepresentationUnit() = unit;
    std::ostringstream stream;
    return writer.Transfer(model) && writer.WriteFile(stream) ? stream.str() : std::string();
}

} // namespace jttest
