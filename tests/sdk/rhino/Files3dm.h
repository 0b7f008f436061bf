// 3DM files in memory: written, read, found on disk.
#pragma once

#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>

#include <cadex/ModelData_Model.hxx>
#include <cadex/Rhino_Reader.hxx>
#include <cadex/Rhino_Writer.hxx>

#include "tests/support/DamagedFiles.h"

namespace rhinotest {

inline std::string BytesOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline std::string Fixture(const std::string& name)
{
    return BytesOf(std::string(ZEMTAR_SOURCE_DIR "/tests/sdk/rhino/fixtures/") + name);
}

/// Nothing when the file is refused. Bodies are not meshed.
inline std::optional<cadex::ModelData_Model> Read(const std::string& bytes)
{
    return cadex::test::ReadBytes<cadex::Rhino_Reader>(bytes);
}

/// The file of a model; empty on failure.
inline std::string Written(const cadex::ModelData_Model& model,
                           cadex::Base_LengthUnit unit = cadex::Base_LU_Millimeters)
{
    cadex::Rhino_Writer writer;
    writer.Parameters().LengthUnit() = unit;
    std::ostringstream stream;
    return writer.Transfer(model) && writer.WriteFile(stream) ? stream.str() : std::string();
}

} // namespace rhinotest
