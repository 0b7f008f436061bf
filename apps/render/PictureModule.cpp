// The module `zemtar-pictures`: the renderer for programs that load it when a picture is asked for.

#include "apps/render/PictureModule.h"

#include "apps/render/Picture.h"

extern "C" __attribute__((visibility("default"))) void
ZemtarWritePicture(const Zemtar::CZemtarDocument& document, const QString& file, int frames, QString& problem)
{
    problem = frames > 0 ? WriteTurntable(document, {}, frames, file) : WritePicture(document, {}, file);
}
