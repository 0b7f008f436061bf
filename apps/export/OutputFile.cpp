#include "apps/export/OutputFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t BufferSize = std::size_t{1} << 16;

/// The file that a chain of links leads to, there or not yet.
std::string Resolved(const std::string& target)
{
    constexpr int longestChain = 40;
    std::error_code error;
    fs::path path(target);
    for (int i = 0; i < longestChain && fs::is_symlink(fs::symlink_status(path, error)); ++i) {
        const fs::path next = fs::read_symlink(path, error);
        if (error) {
            break;
        }
        path = path.parent_path() / next; // an absolute one replaces all
    }
    return path.string();
}

} // namespace

OutputFile::OutputFile(const std::string& target, Progress progress)
    : m_name(target), m_target(Resolved(target)), m_progress(std::move(progress))
{
    std::error_code error;
    if (fs::exists(m_target, error) && !fs::is_regular_file(m_target, error)) {
        throw std::runtime_error("it is there and no file");
    }
    // "x": a file of that name is another writer's.
    for (int i = 0; i < 100 && !m_file; ++i) {
        m_part = m_target + "." + std::to_string(i) + ".part";
        errno = 0;
        m_file = std::fopen(m_part.c_str(), "wbx");
        if (!m_file && errno == ENAMETOOLONG) {
            m_part = (fs::path(m_target).parent_path() / ("export." + std::to_string(i) + ".part")).string();
            m_file = std::fopen(m_part.c_str(), "wbx");
        }
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
        std::remove(m_part.c_str());
    }
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
    std::FILE* const file = m_file;
    m_file = nullptr;
    if (std::fclose(file) != 0 || std::rename(m_part.c_str(), m_target.c_str()) != 0) {
        const int reason = errno;
        std::remove(m_part.c_str());
        errno = reason;
        Fail();
    }
}
