#include "sdk/text/AtomicFile.h"

#include <cerrno>
#include <random>
#include <string>
#include <system_error>
#include <utility>

#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>
#endif

namespace cadex::text {

namespace fs = std::filesystem;

namespace {

std::FILE* Open(const fs::path& path, const char* mode)
{
#ifdef _WIN32
    return _wfopen(path.c_str(), std::wstring(mode, mode + std::char_traits<char>::length(mode)).c_str());
#else
    return std::fopen(path.c_str(), mode);
#endif
}

fs::path FolderOf(const fs::path& target)
{
    return target.has_parent_path() ? target.parent_path() : fs::path(".");
}

/// A name that is short, so that a target name of the greatest length still has such a neighbour.
fs::path NewNameBeside(const fs::path& target)
{
    return FolderOf(target) / (".cadex-" + std::to_string(std::random_device()()) + ".part");
}

// NOTE: Linux alone has files without a name (open(2), O_TMPFILE), and not on every file system. Of them
// nothing is left when the process is killed; elsewhere the file has a name from the start.
std::FILE* OpenNameless([[maybe_unused]] const fs::path& folder)
{
#ifdef O_TMPFILE
    if (access("/proc/self/fd", X_OK) == 0) {
        const int descriptor = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
        return descriptor >= 0 ? fdopen(descriptor, "wb") : nullptr;
    }
#endif
    return nullptr;
}

bool GiveName([[maybe_unused]] std::FILE* file, [[maybe_unused]] const fs::path& name)
{
#ifdef O_TMPFILE
    const std::string nameless = "/proc/self/fd/" + std::to_string(fileno(file));
    return linkat(AT_FDCWD, nameless.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
#else
    return false;
#endif
}

/// Opening for append changes nothing and fails where the file may not be written.
bool MayBeWritten(const fs::path& path)
{
    std::FILE* file = Open(path, "ab");
    return file != nullptr && std::fclose(file) == 0;
}

fs::path Resolved(const fs::path& target)
{
    std::error_code failure;
    if (fs::is_symlink(fs::symlink_status(target, failure))) {
        fs::path behind = fs::weakly_canonical(target, failure);
        return failure ? target : behind;
    }
    return target;
}

} // namespace

bool StreamSink::Write(std::string_view bytes)
{
    return static_cast<bool>(myStream.write(bytes.data(), static_cast<std::streamsize>(bytes.size())));
}

AtomicFile::AtomicFile(const fs::path& target) : myTarget(Resolved(target))
{
    std::error_code failure;
    switch (fs::status(myTarget, failure).type()) {
    case fs::file_type::directory:
        Refuse("the file to be written is a folder");
        return;
    case fs::file_type::not_found:
        OpenBeside();
        return;
    case fs::file_type::regular:
        if (MayBeWritten(myTarget)) {
            OpenBeside();
        } else {
            Refuse("the existing file may not be written");
        }
        return;
    default:
        myFile = Open(myTarget, "wb");
    }
    if (myFile != nullptr) {
        std::setvbuf(myFile, nullptr, _IONBF, 0);
    } else {
        Refuse("the file to be written cannot be opened");
    }
}

void AtomicFile::OpenBeside()
{
    myFile = OpenNameless(FolderOf(myTarget));
    myIsNameless = myFile != nullptr;
    for (int attempt = 0; attempt < 16 && myFile == nullptr; ++attempt) {
        myTemporary = NewNameBeside(myTarget);
        myFile = Open(myTemporary, "wbx");
    }
    if (myFile != nullptr) {
        std::setvbuf(myFile, nullptr, _IONBF, 0);
        return;
    }
    std::error_code failure;
    Refuse(fs::is_directory(FolderOf(myTarget), failure)
               ? "no file can be made in the folder of the file to be written"
               : "the folder of the file to be written does not exist");
}

/// The first reason is the one that counts: later failures follow from it.
bool AtomicFile::Refuse(const char* reason)
{
    if (!std::exchange(myFailed, true)) {
        internal::Reports::Add(internal::Report::Kind::Refused, reason);
    }
    return false;
}

AtomicFile::~AtomicFile()
{
    if (myFile != nullptr) {
        std::fclose(myFile);
        std::error_code ignored;
        if (!myTemporary.empty()) {
            fs::remove(myTemporary, ignored);
        }
    }
}

bool AtomicFile::Write(std::string_view bytes)
{
    myFailed = myFailed || !internal::Progress::GoesOn();
    if (myFailed || myFile == nullptr) {
        return false;
    }
    errno = 0;
    if (std::fwrite(bytes.data(), 1, bytes.size(), myFile) == bytes.size()) {
        return true;
    }
    switch (errno) {
    case ENOSPC:
        return Refuse("the disk is full");
    case EFBIG:
        return Refuse("the file grows beyond what the file system or a limit allows");
    default:
        return Refuse("the file cannot be written to its end");
    }
}

bool AtomicFile::Commit()
{
    if (myFailed || myFile == nullptr || !internal::Progress::GoesOn()) {
        return false;
    }
    bool ok = true;
    if (myIsNameless) {
        myTemporary = NewNameBeside(myTarget);
        ok = GiveName(myFile, myTemporary);
    }
    std::FILE* file = std::exchange(myFile, nullptr);
    ok = std::fclose(file) == 0 && ok;
    if (ok && myTemporary.empty()) {
        return true;
    }
    std::error_code failure;
    const char* reason = "the file cannot be written to its end";
    if (ok) {
        reason = "the written file cannot take the place of the one to be written";
        const fs::file_status before = fs::status(myTarget, failure);
        if (fs::exists(before)) {
            fs::permissions(myTemporary, before.permissions(),
                            failure); // a new file keeps those of the old one
        }
        fs::rename(myTemporary, myTarget, failure);
        if (!failure) {
            return true;
        }
    }
    if (!myTemporary.empty()) {
        fs::remove(myTemporary, failure);
    }
    return Refuse(reason);
}

} // namespace cadex::text
