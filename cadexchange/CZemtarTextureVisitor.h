#pragma once

#include "common/ZemtarExport.h"
#include "host/CZemtarString.h"

#include <cadex/ModelData_TextureVisitor.hxx>

namespace Zemtar {

/// Puts an image file into the output directory for every texture of an appearance, and remembers its path.
/// The import's material conversion lets each texture set accept it.
///
///     visitor.SetOutputDirectory("/out/");
///     visitor.Clear();
///     appearance.TextureSet().Accept(visitor);
///     CZemtarString image = visitor.GetFilePath();
///
/// Failures are not reported: they show in the path alone. Source files are only read.
class ZEMTAR_EXPORT CZemtarTextureVisitor : public cadex::ModelData_TextureVisitor
{
public:
    /// Stores the folder unchanged; a missing one is made when a file texture is copied into it.
    void SetOutputDirectory(CZemtarString folder);

    /// Empties the file path; the output directory stays.
    void Clear();

    /// The path of the last texture, empty when there is none.
    CZemtarString GetFilePath() const;

    /// Copies the referenced file, over an earlier one, to the output directory directly followed by the
    /// file's name: the directory has to end in a separator. The path becomes the copy's, or stays when the
    /// copy fails.
    void operator()(const cadex::ModelData_FileTexture& texture) override;

    /// Writes RGB and RGBA pixels as "DIRECTORY/N.png", N counting all pix-maps of the process from 0. Width
    /// and height are exchanged, the pixels being read row after row of that width. The path becomes the
    /// file's even when nothing could be written, as for other pixel formats.
    void operator()(const cadex::ModelData_PixMapTexture& texture) override;

private:
    CZemtarString m_filePath;
    CZemtarString m_outputDirectory;
};

} // namespace Zemtar
