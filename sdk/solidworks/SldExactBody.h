// The exact bodies of a part, as the modeller's partition in the file keeps them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <cadex/ModelData_Part.hxx>

#include "sdk/model/AppearanceCache.h"
#include "sdk/solidworks/SldContainer.h"
#include "sdk/solidworks/SldDisplayList.h"

namespace cadex::solidworks {

/// The transmit data of a configuration's partition; empty where the file has none. Throws Unreadable when it
/// is damaged.
std::string ReadPartition(Container& container, const std::string& configuration);

/// Adds the bodies to the part as one representation. False, with the part as it was, where the partition has
/// no bodies (they may be in a journal behind it that is not public), or where they are not what is
/// displayed: a face is lost, or the areas differ. `look` is that of bodies without their own.
bool AddExactBody(std::string_view partition, const std::vector<DisplayBody>& displayed,
                  const std::optional<DisplayLook>& look, internal::AppearanceCache& looks,
                  ModelData_Part& part);

} // namespace cadex::solidworks
