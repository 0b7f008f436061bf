#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

namespace cadex::test {

/// A fresh folder with a Chinese name, removed at the end.
class ScratchFolder
{
public:
    ScratchFolder() { std::filesystem::create_directory(myPath); }
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(myPath, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& Path() const { return myPath; }

private:
    const std::filesystem::path myPath = std::filesystem::temp_directory_path() /
                                         ("occt-\xE9\x9B\xB6-" + std::to_string(std::random_device()()));
};

} // namespace cadex::test
