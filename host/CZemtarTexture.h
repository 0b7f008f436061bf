#pragma once

#include "host/CZemtarString.h"
#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// Where a texture's image lies: a file name and, apart from it, the folder that a relative name is looked up
/// in; and the name of the file that stands in for it while the program runs (a converted or downloaded
/// copy), which is not stored.
class ZEMTAR_CORE_EXPORT CZemtarTexture
{
public:
    CZemtarTexture() = default;
    /// As `SetFilename(filename, false)`.
    explicit CZemtarTexture(const CZemtarString& filename) { SetFilename(filename, false); }

    const CZemtarString& Filename() const { return m_filename; }
    const CZemtarString& Path() const { return m_path; }
    const CZemtarString& RunTimeFilename() const { return m_runTimeFilename; }

    /// Gives the file to open: the folder and the name, with a system separator between where the folder has
    /// none; the name alone when it is absolute or there is no folder. With `runTime`, the run-time file name
    /// when there is one.
    CZemtarString FullFilename(bool runTime) const;

    /// With `keepPath` stores the name as it stands and leaves the folder; without, the name's folder part,
    /// up to and with its last separator, becomes the folder.
    void SetFilename(const CZemtarString& filename, bool keepPath);
    void SetPath(const CZemtarString& path) { m_path = path; }
    void SetRunTimeFilename(const CZemtarString& filename) { m_runTimeFilename = filename; }

private:
    CZemtarString m_filename;
    CZemtarString m_path;
    CZemtarString m_runTimeFilename;
};

} // namespace Zemtar
