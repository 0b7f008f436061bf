#pragma once

#include <cstdint>
#include <string>

class OutputFile;

/// A picture file on its way into another file: PNG and JPEG files as they stand, others as PNG.
class Picture
{
public:
    /// `file`: UTF-8. A picture that cannot be read is empty.
    explicit Picture(std::string file);

    bool IsEmpty() const { return m_size == 0; }
    const char* MimeType() const { return m_isJpeg ? "image/jpeg" : "image/png"; }
    std::uint64_t Size() const { return m_size; }
    /// Writes `Size()` bytes; a std::runtime_error when the file is another than before.
    void WriteTo(OutputFile& file) const;

private:
    std::string m_file;
    std::string m_png; ///< empty for a file that goes as it stands
    std::uint64_t m_size = 0;
    bool m_isJpeg = false;
};
