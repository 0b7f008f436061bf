#pragma once

/// Is called before a QGuiApplication or QApplication is made: without a display that answers, the
/// application then starts without windows, where Qt would end the process. Leaves a platform that the user
/// chose as it is.
void UseDisplayIfAny();
