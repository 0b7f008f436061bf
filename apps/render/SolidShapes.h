#pragma once

#include "apps/render/SceneModel.h"

#include <vector>

/// Finds which shapes of a model bound volumes: 1 for one that is wound outwards, -1 inwards, 0 for an open
/// one. Shapes that close only together with those beside them below one node, as a part with several colours
/// has them, count as closed.
std::vector<int> FindSolids(const SceneModel& model);
