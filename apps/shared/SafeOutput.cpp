#include "apps/shared/SafeOutput.h"

#include <array>
#include <cstdio>
#include <ostream>

namespace {

/// Controls C0 without tab and line end, delete, controls C1, and the marks that reorder or isolate text.
bool IsUnsafe(char32_t character)
{
    return (character < 0x20 && character != '\n' && character != '\t') ||
           (character >= 0x7f && character <= 0x9f) || (character >= 0x202a && character <= 0x202e) ||
           (character >= 0x2066 && character <= 0x2069);
}

std::string Escaped(char32_t character)
{
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "\\u%04x", static_cast<unsigned>(character));
    return text.data();
}

/// Bytes of the UTF-8 sequence that a first byte begins; 0 for a byte that begins none.
std::size_t LengthOf(unsigned char first)
{
    return first < 0x80 ? 1 : first < 0xc2 ? 0 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : first < 0xf5 ? 4 : 0;
}

/// The character of a whole sequence of two to four bytes.
char32_t Decoded(const std::string& sequence)
{
    auto character =
        static_cast<char32_t>(static_cast<unsigned char>(sequence[0]) & (0x7f >> sequence.size()));
    for (std::size_t i = 1; i < sequence.size(); ++i) {
        character = (character << 6) | (static_cast<unsigned char>(sequence[i]) & 0x3f);
    }
    return character;
}

} // namespace

QString Printable(const QString& text)
{
    QString safe;
    safe.reserve(text.size());
    for (const QChar character : text) {
        if (character == '\n' || character == '\t' || IsUnsafe(character.unicode())) {
            safe += QString::fromStdString(Escaped(character.unicode()));
        } else {
            safe += character;
        }
    }
    return safe;
}

class SafeOutput::Buffer : public std::streambuf
{
public:
    explicit Buffer(std::streambuf* sink) : m_sink(sink) {}
    std::streambuf* Sink() const { return m_sink; }

protected:
    std::streamsize xsputn(const char* text, std::streamsize count) override
    {
        std::streamsize plain = 0; // bytes before `i` that pass as they are
        for (std::streamsize i = 0; i < count; ++i) {
            const auto byte = static_cast<unsigned char>(text[i]);
            if (m_sequence.empty() && byte < 0x7f && !IsUnsafe(byte)) {
                continue;
            }
            if (!Send(text + plain, i - plain) || !Take(text[i])) {
                return plain;
            }
            plain = i + 1;
        }
        return Send(text + plain, count - plain) ? count : plain;
    }

    int_type overflow(int_type character) override
    {
        if (traits_type::eq_int_type(character, traits_type::eof())) {
            return traits_type::not_eof(character);
        }
        const char byte = traits_type::to_char_type(character);
        return xsputn(&byte, 1) == 1 ? character : traits_type::eof();
    }

    int sync() override { return m_sink->pubsync(); }

private:
    bool Send(const char* text, std::streamsize count)
    {
        return count == 0 || m_sink->sputn(text, count) == count;
    }
    bool Send(const std::string& text)
    {
        return Send(text.data(), static_cast<std::streamsize>(text.size()));
    }

    /// Takes a byte that is part of a longer sequence, or unsafe.
    bool Take(char byte)
    {
        const bool isContinuation = (static_cast<unsigned char>(byte) & 0xc0) == 0x80;
        if (!m_sequence.empty() && !isContinuation) {
            m_sequence.clear();
            return Send("\xef\xbf\xbd") && Begin(byte);
        }
        return m_sequence.empty() ? Begin(byte) : Continue(byte);
    }

    bool Begin(char byte)
    {
        switch (LengthOf(static_cast<unsigned char>(byte))) {
        case 0:
            return Send("\xef\xbf\xbd");
        case 1:
            return Send(IsUnsafe(static_cast<unsigned char>(byte)) ? Escaped(static_cast<unsigned char>(byte))
                                                                   : std::string(1, byte));
        default:
            m_sequence = byte;
            return true;
        }
    }

    bool Continue(char byte)
    {
        m_sequence += byte;
        if (m_sequence.size() < LengthOf(static_cast<unsigned char>(m_sequence[0]))) {
            return true;
        }
        const std::string whole = std::move(m_sequence);
        m_sequence.clear();
        const char32_t character = Decoded(whole);
        return Send(IsUnsafe(character) ? Escaped(character) : whole);
    }

    std::streambuf* m_sink;
    std::string m_sequence; ///< begun, not whole
};

SafeOutput::SafeOutput(std::ostream& stream)
    : m_stream(stream), m_buffer(std::make_unique<Buffer>(stream.rdbuf()))
{
    m_stream.rdbuf(m_buffer.get());
}

SafeOutput::~SafeOutput()
{
    m_stream.flush();
    m_stream.rdbuf(m_buffer->Sink());
}
