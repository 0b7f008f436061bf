// Marks what libZemtarCADExchange shows to programs; everything else in it is hidden.
#pragma once

#define ZEMTAR_EXPORT __attribute__((visibility("default")))
