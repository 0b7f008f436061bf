#pragma once

#include <string_view>

/// Is called before a QGuiApplication or QApplication is made: without a display that answers, the
/// application then starts without windows, where Qt would end the process. Leaves a platform that the user
/// chose as it is.
void UseDisplayIfAny();

/// Whether a word of the command line is the option, or begins with it. For what must be known before the
/// application object is made.
bool IsOptionGiven(int argc, char** argv, std::string_view option);
