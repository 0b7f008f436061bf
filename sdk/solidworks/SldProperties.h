// What a SolidWorks file says about itself: title, author, dates, the user's own properties, its material.
#pragma once

#include <string>

#include <cadex/ModelData_PropertyTable.hxx>

#include "sdk/solidworks/SldContainer.h"

namespace cadex::solidworks {

/// `configuration` is the number of the one in use. Throws Unreadable for a damaged stream.
void AddDocumentProperties(Container& container, const std::string& configuration,
                           ModelData_PropertyTable& table);

/// The material of a part in a configuration (by name), with its density, where the file names one.
void AddMaterial(Container& container, const std::string& configuration, ModelData_PropertyTable& table);

/// "Steel" of "Materials|Steel|12"; empty for anything else.
Base_UTF16String MaterialName(const std::string& text);

} // namespace cadex::solidworks
