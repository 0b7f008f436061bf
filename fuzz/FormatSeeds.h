#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Zemtar::Fuzz {

/// Exact bodies and other content that the writer of a format has no need of, composed as its tests do; empty
/// for formats whose examples and writer do.
std::vector<std::string> ComposedSeeds(std::string_view format);

} // namespace Zemtar::Fuzz
