#pragma once

#include "platform/task/DataItem.h"
#include "platform/task/EdgeMfgShape.h"

#include <memory>
#include <string>
#include <vector>

namespace vrk::task {

class Path;

/// What the moves along a seam refer to.
struct SeamPathOptions {
    rob::Posed seamInFrame;             ///< where the coordinates of the seam lie in the user frame of the work object
    std::shared_ptr<WObjDataItem> wobj; ///< null for the world
    std::shared_ptr<ToolDataItem> tool; ///< null for none
    std::string speed = "v50";          ///< of every move
    std::string zone = "z1";            ///< of every move but the first and the last, which stop
};

/// A path and the targets of its moves, which a task has to take in ahead of it.
struct SeamPath {
    std::shared_ptr<Path> path;
    std::vector<std::shared_ptr<RobTargetDataItem>> targets;
};

/// Linear moves along a run: one to each point through which it is drawn, from its start to its end.
///
/// At each target the z axis runs along the tool, into the part: against the tool direction of the run. The x axis runs along
/// the tangent in the direction of travel, as nearly as that leaves it; y completes them to a right-handed frame. Where two
/// edges follow each other smoothly they share a target; at a corner there are two, between which the tool turns on the spot.
/// Targets are named after the run, with a number. Ids come from the manager.
/// @throws std::invalid_argument "a run without edges makes no path"; std::overflow_error "0-length vector cannot be
///         normalized." for a tool direction along the edge.
VRK_EXPORT SeamPath MakeSeamPath(const EdgeMfgShape& seam, const std::string& name,
                                 const SeamPathOptions& options = {});

} // namespace vrk::task
