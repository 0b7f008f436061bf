#pragma once

#include <QString>

#include <memory>
#include <streambuf>
#include <string>

/// A text as one line of a terminal shows it: control characters and those that turn the direction of writing
/// become \u001b and the like, line ends too.
QString Printable(const QString& text);

/// Lets nothing through to a stream that could command a terminal: names in CAD files hold what they like.
/// Line ends and tabs pass; other control characters and direction marks become \u001b and the like, which
/// JSON reads as the character again; bytes that are no UTF-8 become U+FFFD.
///
///     const SafeOutput out(std::cout), errors(std::cerr);
class SafeOutput
{
public:
    explicit SafeOutput(std::ostream& stream);
    /// Gives the stream its own buffer back.
    ~SafeOutput();
    SafeOutput(const SafeOutput&) = delete;
    SafeOutput& operator=(const SafeOutput&) = delete;

private:
    class Buffer;
    std::ostream& m_stream;
    std::unique_ptr<Buffer> m_buffer;
};
