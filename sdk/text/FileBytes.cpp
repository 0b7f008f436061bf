#include "sdk/text/FileBytes.h"

#include <fstream>
#include <system_error>

namespace cadex::text {

bool ReadBytes(const std::filesystem::path& file, std::string& bytes)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error) || error) {
        return false;
    }
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    std::ifstream stream(file, std::ios::binary);
    if (error || size == 0 || !stream) {
        return false;
    }
    bytes.resize(static_cast<std::size_t>(size));
    stream.read(bytes.data(), static_cast<std::streamsize>(size));
    return static_cast<std::uintmax_t>(stream.gcount()) == size;
}

Base_UTF16String StemOf(const std::filesystem::path& file)
{
    const std::u8string stem = file.stem().u8string();
    return Base_UTF16String(reinterpret_cast<const char*>(stem.c_str()));
}

} // namespace cadex::text
