// The reader engine of formats that are read from memory whole: ACIS, Parasolid and SolidWorks differ in
// their files alone.
//
//     registry.SetReader(Format::ACIS, [] { return std::make_unique<FileReaderEngine<acis::AcisFile>>(); });
#pragma once

#include <iterator>
#include <string>

#include "sdk/model/ReaderEngine.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/text/FileBytes.h"

namespace cadex::occt {

/// `File` has Load(bytes, name), false with a report when it is refused, and Build(model); both run inside
/// the engine's guard. The name is that of the file without folder and extension, empty for a stream.
template <typename File>
class FileReaderEngine final : public internal::ReaderEngine
{
public:
    bool ReadFile(const std::filesystem::path& file, const Base_ReaderParameters&) override
    {
        std::string bytes;
        return text::ReadBytes(file, bytes) && Load(std::move(bytes), text::StemOf(file));
    }

    bool ReadStream(std::istream& stream, const Base_ReaderParameters&) override
    {
        std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        return !stream.bad() && Load(std::move(bytes), {});
    }

    bool Transfer(ModelData_Model& model) override
    {
        return RunGuarded(EngineUse::Geometry, [&] {
            myFile.Build(model);
            return true;
        });
    }

private:
    bool Load(std::string bytes, const Base_UTF16String& name)
    {
        return RunGuarded(EngineUse::Geometry, [&] { return myFile.Load(std::move(bytes), name); });
    }

    File myFile;
};

} // namespace cadex::occt
