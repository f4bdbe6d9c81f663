#pragma once

#include "platform/kinematics/Reach.h"

#include <map>
#include <memory>

namespace vrkview {

/// How far a robot reaches, and by which joints.
struct RobotReach {
    vrk::kinematics::ArmChain chain;
    vrk::kinematics::Reach reach;
};

/// By the robot's id.
using DrawnReaches = std::map<unsigned, std::shared_ptr<const RobotReach>>;

/// Draws how far these robots reach, and of all others no longer. Posts; robots that are gone by then are passed over.
///
/// Each curve is drawn twice: as a surface, which hangs on the robot, and as a line, which hangs on what the first joint
/// moves and so lies in the plane of the arm, wherever that is turned. Both are hidden and moved with these, and the camera
/// and picks pass over them.
void drawReaches(DrawnReaches reaches);

/// What is drawn of it, for whoever looks: surfaces and lines. Render thread.
int reachVisualsOf(unsigned robot);

} // namespace vrkview
