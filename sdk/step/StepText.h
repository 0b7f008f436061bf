// The clear text reader's names as this room uses them.
#pragma once

#include "sdk/part21/ClearText.h"
#include "sdk/part21/Strings.h"

namespace cadex::step {

using part21::ClearText;
using part21::Cursor;
using part21::DecodeString;
using part21::EndsWith;
using part21::RecordId;

} // namespace cadex::step
