// A file that is whole or not there: bytes go to a new file beside the target, which takes the target's place
// only when everything has been written.
//
//     AtomicFile file("out/engine.step");
//     bool ok = WriteEverything(file) && file.Commit();   // without Commit the target stays as it was
#pragma once

#include <cstdio>
#include <filesystem>
#include <ostream>
#include <string_view>

namespace cadex::text {

/// Where bytes go. After a failed Write the result of all later ones is false.
class ByteSink
{
public:
    virtual ~ByteSink() = default;
    virtual bool Write(std::string_view bytes) = 0;
};

/// A sink on a stream of the caller's, which must outlive it.
class StreamSink final : public ByteSink
{
public:
    explicit StreamSink(std::ostream& stream) : myStream(stream) {}
    bool Write(std::string_view bytes) override;

private:
    std::ostream& myStream;
};

/// A symbolic link is followed: the file behind it is replaced. A target that is neither a regular file nor
/// missing (a pipe, a device) is written directly. A folder, or an existing file that may not be written, is
/// refused. What goes wrong is reported. On Linux, where the file system can, the new file has no name until
/// it is whole, so that a killed process leaves none. Writing fails once the user has cancelled.
class AtomicFile final : public ByteSink
{
public:
    /// Creates the new file; IsOpen() tells whether that worked.
    explicit AtomicFile(const std::filesystem::path& target);
    /// Removes the new file unless it was committed.
    ~AtomicFile() override;
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    bool IsOpen() const { return myFile != nullptr; }
    /// Unbuffered: hand over large pieces.
    bool Write(std::string_view bytes) override;
    /// Closes the file and moves it to the target. False, with the target as it was, when any byte could not
    /// be written.
    bool Commit();

private:
    void OpenBeside();
    bool Refuse(const char* reason);

    std::filesystem::path myTarget;
    std::filesystem::path myTemporary; // empty while it is nameless, and when the target is written directly
    std::FILE* myFile = nullptr;
    bool myIsNameless = false;
    bool myFailed = false;
};

} // namespace cadex::text
