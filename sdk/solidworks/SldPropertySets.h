// Property sets of compound files: numbered values, and for those of the user a dictionary of their names.
#pragma once

#include <string_view>

#include <cadex/ModelData_PropertyTable.hxx>

namespace cadex::solidworks {

/// Adds title, subject, author, keywords, comments, who saved and when of a summary, and what the user
/// defined; anything damaged is passed over.
void AddPropertySet(std::string_view bytes, ModelData_PropertyTable& table);

} // namespace cadex::solidworks
