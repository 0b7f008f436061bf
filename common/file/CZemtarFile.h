#pragma once

#include "common/ZemtarExport.h"
#include "host/CZemtarString.h"

namespace Zemtar {

/// File-system utilities of the library, the host and its other plug-ins: files, folders and path texts,
/// temporary and well-known folders, external tools.
///
///     CZemtarString name = texture;
///     CZemtarFile::FileCopy(texture, CZemtarFile::CreateTempFolder() + "/" + name.RemovePath(), true);
///
/// Nothing throws or logs: a failure is false or an empty string. Nothing is created or deleted beyond what a
/// function says.
class ZEMTAR_EXPORT CZemtarFile
{
public:
    // Files and paths
    // ------------------------------------------------------------------------------------------

    /// Whether a file, not a folder, exists at `path`.
    static bool FileExists(CZemtarString path);

    /// Whether a folder exists at `path`.
    static bool DirectoryExists(CZemtarString path);

    /// Whether `path`, with its separators cleaned as by FixFileNameSlashes, is a file.
    static bool IsFile(CZemtarString path);

    /// Whether `path` is a folder.
    static bool IsDirectory(CZemtarString path);

    /// Makes a folder with all missing parents; returns its absolute path ending in "/", or an empty string.
    static CZemtarString CreateFolder(CZemtarString folder);

    /// Removes the file at `path`, its separators cleaned; false for an empty path or a failed removal.
    static bool DeleteTheFile(CZemtarString path);

    /// Copies a file, making the destination's folder, which stays when the copy then fails.
    ///
    /// True without a copy when both paths are the same (even if there is no such file), when the destination
    /// exists and `overwrite` is false, and when it is the file that the source links to. Otherwise the copy
    /// takes the place of an existing destination (a link itself, not what it leads to) when it is whole.
    /// False when the source does not exist or the copy fails; then an existing destination stays.
    static bool FileCopy(CZemtarString source, CZemtarString destination, bool overwrite);

    /// Renames a file, not a folder; false when there is none or the new path is taken.
    static bool FileRename(CZemtarString oldPath, CZemtarString newPath);

    /// Returns the path with the system's separators, each run of them as one (a leading one too); with
    /// `createFolder`, first makes the folder part of the path as it was passed.
    static CZemtarString FixFileNameSlashes(CZemtarString path, bool createFolder);

    /// Whether two paths, taken as folders, are the same: canonical where both exist, else absolute and
    /// cleaned.
    static bool HaveSamePath(CZemtarString first, CZemtarString second);

    /// Adds the lower-case extension found in `extensionText` (".obj", "name.OBJ", or a file-dialog filter
    /// such as "Wavefront (*.OBJ)") to a file name that has none; a name that has one is returned unchanged.
    static CZemtarString AddExtensinoToFile(CZemtarString fileName, CZemtarString extensionText);

    /// Replaces * \ / : < > ? " | in a bare file name, one after the other, and trims the result.
    static CZemtarString FixShortFileName(CZemtarString fileName, CZemtarString replacement);

    // Temporary and well-known folders
    // -------------------------------------------------------------------------

    /// The temporary folder: the value of ZEMTAR_TEMP_DIR as it stands when that is set, else the system's,
    /// made when missing, with "/" at the end.
    static CZemtarString TheTempFolderName();

    /// A new name in the temporary folder: a UUID in braces directly behind TheTempFolderName, then "." and
    /// `extension` (given without a dot) unless that is empty. Nothing is created.
    static CZemtarString GetTempFullFileName(CZemtarString extension);

    /// Makes a new folder, named by a UUID in braces, in the temporary folder and returns its path.
    static CZemtarString CreateTempFolder();

    /// The folder shared by all users of the machine: "/Users/Shared/".
    static CZemtarString GetPublicFolder();

    /// The user's home folder, without a trailing separator.
    static CZemtarString GetUserHomeDirectory();

    /// Whether a file can be made in the folder, which is itself made when missing. Reseeds `rand`.
    ///
    /// The probe's name begins with a backslash that follows the folder's text directly: without a trailing
    /// "/" the probe lands beside the folder, in its parent. It is removed again.
    static bool IsDirectoryWritable(CZemtarString folder);

    /// Stores the application's base name for the process; meant to be called once, at start.
    static void SetApplicationBaseName(CZemtarString name);

    /// The stored base name, empty at start.
    static CZemtarString ApplicationBaseName();

    // External tools
    // -------------------------------------------------------------------------------------------

    /// Sets `exeName` to ../libexec/ffmpeg beside the running program's folder; whether that file exists.
    static bool GetFFMPEGExeName(CZemtarString& exeName);

    /// Always empty: the renderer counts as not found, even where it is installed.
    static CZemtarString GetIndigoRenderer(bool realTime);

    /// Opens a URL, leniently parsed, with the desktop's handler. Needs a QGuiApplication.
    static bool OpenUrl(CZemtarString url);

private:
    static CZemtarString m_applicationBaseName;
};

} // namespace Zemtar
