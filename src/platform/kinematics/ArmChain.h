#pragma once

#include "platform/common/Export.h"
#include "platform/layout/Mechanism.h"

#include <vector>

namespace vrk::kinematics {

/// A joint that moves, with what is fixed between it and the next.
struct VRK_EXPORT ChainJoint {
    layout::JointType type = layout::JointType::Revolute; ///< not fixed
    rob::Posed origin;                                    ///< of the joint at 0, in what the joint before it moves
    rob::Dird axis{0, 0, 1};                              ///< in what the joint itself moves
    double lower = 0;                                     ///< radians or model units
    double upper = 0;
    unsigned link = 0; ///< that it moves

    /// What it moves, in what the joint before it moves.
    rob::Posed poseAt(double value) const;
    /// How far it moves; a whole turn at the most, which a continuous joint has.
    double span() const;
    bool turns() const { return type != layout::JointType::Prismatic; }
    bool operator==(const ChainJoint&) const = default;
};

/// The joints that carry a point of an arm, from its base on: a value that needs neither the model nor its lock.
struct VRK_EXPORT ArmChain {
    std::vector<ChainJoint> joints; ///< the first one relative to the mechanism
    rob::Posd point;                ///< in the link that the last joint moves, or in the mechanism
    bool hasFollower = false;       ///< a joint that moves the point follows another one; here it is one of its own

    /// The chain to the middle of the wrist: of an arm with more than three joints where the last two axes meet, or else on
    /// the last one, beside the place where tools are fixed; of any other at that place. Joints that do not move that point
    /// are left out, the first one never. Call it under the manager's lock.
    static ArmChain ToWristCentre(const layout::Manipulator& arm);

    /// Where the point is, relative to the mechanism.
    /// @param values  one for each joint; they are not held to the limits.
    rob::Posd pointAt(const std::vector<double>& values) const;
    /// Whether every number is the same: both reach the same places then.
    bool operator==(const ArmChain&) const = default;
};

} // namespace vrk::kinematics
