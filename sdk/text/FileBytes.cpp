#include "sdk/text/FileBytes.h"

#include <fstream>
#include <system_error>

#include <cadex/internal/Reports.hxx>

namespace cadex::text {

namespace {

bool Refuse(const char* reason)
{
    internal::Reports::Add(internal::Report::Kind::Refused, reason);
    return false;
}

} // namespace

bool ReadBytes(const std::filesystem::path& file, std::string& bytes)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error) || error) {
        return Refuse("there is no such file");
    }
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    std::ifstream stream(file, std::ios::binary);
    if (error || !stream) {
        return Refuse("the file cannot be opened");
    }
    if (size == 0) {
        return Refuse("the file is empty");
    }
    bytes.resize(static_cast<std::size_t>(size));
    stream.read(bytes.data(), static_cast<std::streamsize>(size));
    return static_cast<std::uintmax_t>(stream.gcount()) == size ||
           Refuse("the file cannot be read to its end");
}

Base_UTF16String StemOf(const std::filesystem::path& file)
{
    const std::u8string stem = file.stem().u8string();
    return Base_UTF16String(reinterpret_cast<const char*>(stem.c_str()));
}

} // namespace cadex::text
