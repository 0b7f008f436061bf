#pragma once

#include "apps/render/SceneModel.h"

class NodeList;

/// Gives the way that each instance of the model goes in an exploded view: on every level of the tree the
/// children move away from the middle of what they are parts of, by `amount` times their distance from it.
/// Parts stay whole. `amount`: 0 nothing moves, 1 every distance doubles. The model must stand as the
/// document has it.
std::vector<Vec3> ExplodedWays(const SceneModel& model, const NodeList& nodes, double amount);
