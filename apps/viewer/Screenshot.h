#pragma once

#include "apps/render/Picture.h"

/// Imports a file with the settings last stored for its format, without asking, and saves a picture of it or,
/// for more than no `frames`, a turntable's. The program's exit code: 0 done, 1 failed with the reason on
/// standard error.
int RunScreenshot(const QString& file, const QString& pictureFile, const PictureOptions& options, int frames);
