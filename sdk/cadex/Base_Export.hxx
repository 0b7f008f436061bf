// Marks what libcadex shows to programs; everything else in it is hidden.
#pragma once

#define CADEX_EXPORT __attribute__((visibility("default")))
