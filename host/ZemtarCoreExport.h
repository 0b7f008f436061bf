// Marks what libZemtarCore and libZemtarBranding show to programs; everything else in them is hidden.
#pragma once

#define ZEMTAR_CORE_EXPORT __attribute__((visibility("default")))
