#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// A file that is whole or not there: bytes go to a file beside the target, which takes its name on `Commit`.
/// Without a commit nothing is left. Every failure is a std::runtime_error that says why.
///
///     OutputFile file("model.stl");
///     file.Write(header, sizeof(header));
///     file.Commit();
class OutputFile
{
public:
    /// `target`: UTF-8. A link is followed; what is there must be a file. `isCancelled` may be empty; it is
    /// asked every 64 kB or so, and true is a failure.
    explicit OutputFile(const std::string& target, std::function<bool()> isCancelled = {});
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void Write(const void* data, std::size_t size);
    void Write(std::string_view text) { Write(text.data(), text.size()); }
    template <class Value>
    void WriteValue(const Value& value)
    {
        Write(&value, sizeof(value));
    }
    /// Fills up with `filler` to a multiple of four bytes.
    void Align(char filler);
    /// Writes over what stands at `offset`.
    void Patch(long offset, std::uint32_t value);
    std::uint64_t Size() const { return m_size; }
    /// As it was given.
    const std::string& Name() const { return m_name; }
    void Commit();

private:
    void Flush();
    [[noreturn]] void Fail() const;

    std::string m_name;
    std::string m_target; ///< what its links lead to
    std::string m_part;
    std::function<bool()> m_isCancelled;
    std::FILE* m_file = nullptr;
    std::vector<char> m_buffer;
    std::uint64_t m_size = 0;
};
