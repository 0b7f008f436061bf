// The open engine's reader of STEP files.
#pragma once

#include <memory>

#include "sdk/model/ReaderEngine.h"

namespace cadex::step {

/// AP203, AP214 and AP242. See StepModelBuilder.h for what a model is made of.
std::unique_ptr<internal::ReaderEngine> MakeStepEngine();

} // namespace cadex::step
