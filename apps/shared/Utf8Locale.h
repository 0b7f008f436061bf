#pragma once

/// Takes the user's locale. Names and paths are UTF-8; in a locale without it the Qt core would say so on
/// standard error at every start, so such a locale is replaced. Call it first in main().
void UseUtf8Locale();
