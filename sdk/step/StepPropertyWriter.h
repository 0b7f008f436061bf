// Property tables as user-defined attributes of a STEP file.
#pragma once

#include <cadex/ModelData_PropertyTable.hxx>

#include "sdk/part21/Part21Writer.h"

namespace cadex::step {

using part21::Part21Writer;
using part21::Ref;

/// Attaches the table to a product definition or an occurrence; an empty one writes nothing. Texts, times
/// (ISO 8601), points and boxes become descriptive items, whole numbers of 32 bits integers, finite reals
/// ratio measures; other numbers texts.
void WriteStepProperties(Part21Writer& out, const ModelData_PropertyTable& table, Ref target, Ref context);

} // namespace cadex::step
