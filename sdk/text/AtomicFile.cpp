#include "sdk/text/AtomicFile.h"

#include <cerrno>
#include <random>
#include <string>
#include <system_error>
#include <utility>

#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

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

// The name is short, so that a target name of the greatest length still has a neighbour.
void AtomicFile::OpenBeside()
{
    std::random_device random;
    for (int attempt = 0; attempt < 16 && myFile == nullptr; ++attempt) {
        myTemporary = myTarget.parent_path() / (".cadex-" + std::to_string(random()) + ".part");
        myFile = Open(myTemporary, "wbx");
    }
    if (myFile != nullptr) {
        std::setvbuf(myFile, nullptr, _IONBF, 0);
        return;
    }
    std::error_code failure;
    const fs::path folder = myTarget.has_parent_path() ? myTarget.parent_path() : fs::path(".");
    Refuse(fs::is_directory(folder, failure) ? "no file can be made in the folder of the file to be written"
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
    std::FILE* file = std::exchange(myFile, nullptr);
    bool ok = std::fclose(file) == 0;
    if (!ok) {
        Refuse("the file cannot be written to its end");
    }
    if (myTemporary.empty()) {
        return ok;
    }
    std::error_code failure;
    const fs::file_status before = fs::status(myTarget, failure);
    if (ok && fs::exists(before)) {
        fs::permissions(myTemporary, before.permissions(), failure); // a new file keeps those of the old one
    }
    if (ok) {
        fs::rename(myTemporary, myTarget, failure);
        ok = !failure || Refuse("the written file cannot take the place of the one to be written");
    }
    if (!ok) {
        fs::remove(myTemporary, failure);
    }
    return ok;
}

} // namespace cadex::text
