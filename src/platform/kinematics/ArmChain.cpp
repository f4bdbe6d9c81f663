#include "platform/kinematics/ArmChain.h"

#include "platform/layout/Frame.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vrk::kinematics {
namespace {

constexpr double fullTurn = 2 * std::numbers::pi;
constexpr std::size_t jointsOfAWrist = 3;
constexpr double parallelSine = 1e-6;
// Axes that pass each other within this part of the arm's length meet: a description gives its numbers rounded.
constexpr double meetingPart = 1e-4;

/// How far a point in what a joint moves lies from its axis.
double distanceToAxis(const ChainJoint& joint, const rob::Posd& p)
{
    return (rob::Vec3d(p) - joint.axis * rob::Vec3d(p).dot(joint.axis)).length();
}

bool isOnAxis(const ChainJoint& joint, const rob::Posd& p, double tolerance)
{
    return joint.turns() && distanceToAxis(joint, p) <= tolerance;
}

/// Where the axis of the last joint meets that of the one before, in what it moves; else the place on it that is nearest to
/// `wrist`.
rob::Posd middleOfWrist(const ChainJoint& last, const ChainJoint& before, const rob::Posd& wrist, double tolerance)
{
    const rob::Posed toLast = last.poseAt(0).inverse();
    const rob::Posd origin = toLast * rob::Posd();
    const rob::Dird direction = toLast * before.axis;
    const rob::Vec3d across = direction.cross(last.axis);
    if (before.turns() && across.length() > parallelSine) {
        // The foot on the last axis of what is common to both.
        const double along = rob::Vec3d(origin).cross(direction).dot(across) / -across.squaredLength();
        const rob::Posd foot(last.axis * along);
        const double distance = std::abs(rob::Vec3d(origin).dot(across)) / across.length();
        if (distance <= tolerance)
            return foot;
    }
    return rob::Posd(last.axis * rob::Vec3d(wrist).dot(last.axis));
}

double lengthOf(const ArmChain& chain)
{
    double length = chain.point.length();
    for (const ChainJoint& joint : chain.joints)
        length += joint.origin.position.length();
    return length;
}

/// The chain to the place where tools are fixed.
ArmChain chainToWrist(const layout::Manipulator& arm)
{
    const layout::Wrist& wrist = *arm.getWrist();
    const std::vector<layout::Joint>& joints = arm.getJoints();
    ArmChain chain;
    bool isFirst = true;
    // Upwards from the wrist. `passed` is what was passed last, the wrist or a joint that moves, in the link that is reached.
    rob::Posed passed = wrist.getPose();
    unsigned link = wrist.getParentId();
    for (auto above = std::ranges::find(joints, link, &layout::Joint::childLink); above != joints.end();
         above = std::ranges::find(joints, link, &layout::Joint::childLink)) {
        const ChainJoint joint{above->type, above->origin, above->axis, above->lower, above->upper, link};
        const bool isLocked = above->hasLimits() && above->lower == above->upper;
        if (!above->isMoving()) {
            passed = above->origin * passed;
        } else if (isLocked) {
            passed = joint.poseAt(above->lower) * passed;
        } else {
            if (isFirst) {
                chain.point = passed.position;
                isFirst = false;
            } else {
                chain.joints.back().origin = passed;
            }
            chain.joints.push_back(joint);
            chain.hasFollower = chain.hasFollower || above->follows;
            passed = joint.origin;
        }
        link = above->parentLink;
    }
    for (const std::shared_ptr<layout::Link>& root : arm.getLinks())
        if (root->getId() == link)
            passed = root->getPose() * passed;
    if (isFirst)
        chain.point = passed.position;
    else
        chain.joints.back().origin = passed;
    std::ranges::reverse(chain.joints);
    return chain;
}

} // namespace

rob::Posed ChainJoint::poseAt(double value) const
{
    if (turns())
        return origin * rob::Posed(rob::Posd(), rob::Rotationd(value, axis));
    return origin * rob::Posed(rob::Posd(axis * value));
}

double ChainJoint::span() const
{
    if (type == layout::JointType::Continuous)
        return fullTurn;
    return turns() ? std::min(upper - lower, fullTurn) : upper - lower;
}

ArmChain ArmChain::ToWristCentre(const layout::Manipulator& arm)
{
    ArmChain chain = chainToWrist(arm);
    std::vector<ChainJoint>& joints = chain.joints;
    if (joints.size() <= jointsOfAWrist || !joints.back().turns())
        return chain;
    const double tolerance = meetingPart * lengthOf(chain);
    chain.point = middleOfWrist(joints.back(), joints[joints.size() - 2], chain.point, tolerance);
    while (joints.size() > 1 && isOnAxis(joints.back(), chain.point, tolerance)) {
        chain.point = joints.back().poseAt(0) * chain.point;
        joints.pop_back();
    }
    return chain;
}

rob::Posd ArmChain::pointAt(const std::vector<double>& values) const
{
    rob::Posd at = point;
    for (std::size_t i = joints.size(); i-- > 0;)
        at = joints[i].poseAt(values[i]) * at;
    return at;
}

} // namespace vrk::kinematics
