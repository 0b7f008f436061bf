#include "apps/export/OutputFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>
#endif

namespace fs = std::filesystem;

namespace {

constexpr std::size_t BufferSize = std::size_t{1} << 16;
constexpr int MostNames = 100; // that are tried

/// The file that a chain of links leads to, there or not yet.
std::string Resolved(const std::string& target)
{
    constexpr int LongestChain = 40;
    std::error_code error;
    fs::path path(target);
    for (int i = 0; i < LongestChain && fs::is_symlink(fs::symlink_status(path, error)); ++i) {
        const fs::path next = fs::read_symlink(path, error);
        if (error) {
            break;
        }
        path = path.parent_path() / next; // an absolute one replaces all
    }
    return path.string();
}

/// A file without a name, of which a killed process leaves nothing: on Linux, where the file system has such.
std::FILE* OpenNameless([[maybe_unused]] const fs::path& target)
{
#ifdef O_TMPFILE
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (access("/proc/self/fd", X_OK) == 0) {
        const int descriptor = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
        return descriptor >= 0 ? fdopen(descriptor, "wb") : nullptr;
    }
#endif
    return nullptr;
}

bool GiveName([[maybe_unused]] std::FILE* file, [[maybe_unused]] const std::string& name)
{
#ifdef O_TMPFILE
    const std::string nameless = "/proc/self/fd/" + std::to_string(fileno(file));
    return linkat(AT_FDCWD, nameless.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
#else
    return false;
#endif
}

} // namespace

OutputFile::OutputFile(const std::string& target, Progress progress)
    : m_name(target), m_target(Resolved(target)), m_progress(std::move(progress))
{
    std::error_code error;
    if (fs::exists(m_target, error) && !fs::is_regular_file(m_target, error)) {
        throw std::runtime_error("it is there and no file");
    }
    if (fs::exists(m_target, error) && std::fclose(Existing()) != 0) {
        Fail();
    }
    m_file = OpenNameless(m_target);
    m_isNameless = m_file != nullptr;
    for (int i = 0; i < MostNames && !m_file; ++i) {
        m_part = PartName(i);
        errno = 0;
        m_file = std::fopen(m_part.c_str(), "wbx"); // a file of that name is another writer's
        if (!m_file && errno != EEXIST) {
            break;
        }
    }
    if (!m_file) {
        Fail();
    }
    std::setvbuf(m_file, nullptr, _IONBF, 0);
    m_buffer.reserve(BufferSize);
}

OutputFile::~OutputFile()
{
    if (m_file) {
        std::fclose(m_file);
        if (!m_isNameless) {
            std::remove(m_part.c_str());
        }
    }
}

/// Opened for append, which changes nothing: what may not be written is not replaced either.
std::FILE* OutputFile::Existing() const
{
    errno = 0;
    std::FILE* const file = std::fopen(m_target.c_str(), "ab");
    if (!file) {
        Fail();
    }
    return file;
}

/// Short, so that a target's name of the greatest length still has such neighbours.
std::string OutputFile::PartName(int number) const
{
    return (fs::path(m_target).parent_path() / (".export-" + std::to_string(number) + ".part")).string();
}

/// Of a nameless file, which is whole now.
bool OutputFile::NamePart()
{
    bool isNamed = false;
    for (int i = 0; i < MostNames && !isNamed; ++i) {
        m_part = PartName(i);
        errno = 0;
        isNamed = GiveName(m_file, m_part);
        if (!isNamed && errno != EEXIST) {
            break;
        }
    }
    return isNamed;
}

void OutputFile::Fail() const
{
    throw std::runtime_error(errno != 0 ? std::generic_category().message(errno) : "it cannot be written");
}

void OutputFile::Write(const void* data, std::size_t size)
{
    m_size += size;
    if (m_buffer.size() + size > BufferSize) {
        GoOn();
        WriteOut();
    }
    if (size >= BufferSize) {
        if (std::fwrite(data, 1, size, m_file) != size) {
            Fail();
        }
        return;
    }
    const auto* bytes = static_cast<const char*>(data);
    m_buffer.insert(m_buffer.end(), bytes, bytes + size);
}

void OutputFile::Align(char filler)
{
    while (m_size % 4 != 0) {
        Write(&filler, 1);
    }
}

void OutputFile::GoOn() const
{
    const double fraction =
        m_expected == 0 ? 0.0 : std::min(1.0, static_cast<double>(m_size) / static_cast<double>(m_expected));
    if (m_progress && !m_progress(fraction)) {
        throw std::runtime_error("cancelled");
    }
}

void OutputFile::WriteOut()
{
    if (std::fwrite(m_buffer.data(), 1, m_buffer.size(), m_file) != m_buffer.size()) {
        Fail();
    }
    m_buffer.clear();
}

void OutputFile::Patch(long offset, std::uint32_t value)
{
    WriteOut();
    if (std::fseek(m_file, offset, SEEK_SET) != 0 || std::fwrite(&value, sizeof(value), 1, m_file) != 1 ||
        std::fseek(m_file, 0, SEEK_END) != 0) {
        Fail();
    }
}

void OutputFile::Commit()
{
    WriteOut();
    std::error_code error;
    const fs::file_status before = fs::status(m_target, error);
    if (m_isNameless && !NamePart()) {
        Fail();
    }
    m_isNameless = false; // whatever goes wrong from here on, the part is removed
    if (fs::exists(before)) {
        fs::permissions(m_part, before.permissions(), error); // a new file keeps those of the old one
    }
    std::FILE* const file = m_file;
    m_file = nullptr;
    if (std::fclose(file) != 0 || std::rename(m_part.c_str(), m_target.c_str()) != 0) {
        const int reason = errno;
        std::remove(m_part.c_str());
        errno = reason;
        Fail();
    }
}
