// The open engine's reader of IGES files.
#pragma once

#include <memory>

#include "sdk/model/ReaderEngine.h"

namespace cadex::iges {

/// IGES up to 5.3, fixed and compressed ASCII. See IgesModelBuilder.h for what a model is made of.
std::unique_ptr<internal::ReaderEngine> MakeIgesEngine();

} // namespace cadex::iges
