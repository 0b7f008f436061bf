#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// A file that is whole or not there: bytes go to a file beside the target, which takes its name on `Commit`.
/// Without a commit nothing is left. An existing file that may not be written is no target. Every failure is
/// a std::runtime_error that says why.
///
///     OutputFile file("model.stl");
///     file.Write(header, sizeof(header));
///     file.Commit();
class OutputFile
{
public:
    /// Is told the fraction that is written, 0 to 1; false ends the writing as a failure.
    using Progress = std::function<bool(double fraction)>;

    /// `target`: UTF-8. A link is followed; what is there must be a file. `progress` may be empty; it is
    /// called every 64 kB or so, and no more once the file is committed.
    explicit OutputFile(const std::string& target, Progress progress = {});
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
    /// Says how large the file will be, roughly; before, the fraction that is told is 0.
    void Expect(std::uint64_t size) { m_expected = size; }
    /// Tells the progress where nothing is written for long; a failure when it says so.
    void GoOn() const;
    /// As it was given.
    const std::string& Name() const { return m_name; }
    void Commit();

private:
    void WriteOut();
    [[noreturn]] void Fail() const;
    std::FILE* Existing() const;
    std::string PartName(int number) const;
    bool NamePart();

    std::string m_name;
    std::string m_target; ///< what its links lead to
    std::string m_part;
    Progress m_progress;
    std::FILE* m_file = nullptr;
    bool m_isNameless = false; ///< until it is whole
    std::vector<char> m_buffer;
    std::uint64_t m_size = 0;
    std::uint64_t m_expected = 0;
};
