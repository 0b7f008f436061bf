#pragma once

#include "apps/viewer/ViewerSettings.h"

/// Gives the application's windows the light or the dark palette, or the one that the system gave at first.
void ApplyAppearance(ViewerSettings::Appearance look);
