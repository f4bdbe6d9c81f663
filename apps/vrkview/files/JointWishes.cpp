#include "files/JointWishes.h"

#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <numbers>
#include <stdexcept>

namespace vrkview {
namespace {

using vrk::layout::Joint;
using vrk::layout::JointType;
using vrk::layout::Mechanism;

constexpr double radians = std::numbers::pi / 180;

double unitOf(const Joint& joint)
{
    return joint.type == JointType::Prismatic ? 1 : radians;
}

/// What joints a mechanism has that have a value of their own, and the values that they are to get.
struct Moved {
    explicit Moved(Mechanism& mechanism) : mechanism(&mechanism), values(mechanism.getJointValues())
    {
        for (const Joint& joint : mechanism.getJoints())
            if (joint.isDriven())
                joints.push_back(&joint);
    }

    Mechanism* mechanism;
    std::vector<const Joint*> joints;
    std::vector<double> values;
};

/// In the order in which values without a name are given.
std::vector<Moved> allThatMove()
{
    const vrk::layout::Layout& layout = vrk::layout::Layout::inst();
    std::vector<Moved> all;
    const auto add = [&all](const auto& mechanisms) {
        for (const auto& mechanism : mechanisms)
            if (mechanism->jointValueCount() > 0)
                all.emplace_back(*mechanism);
    };
    add(layout.manipulators);
    add(layout.devices);
    add(layout.tools);
    return all;
}

/// @return what is not as it was wished; empty where it is.
std::string give(Moved& moved, std::size_t index, double value)
{
    const Joint& joint = *moved.joints[index];
    const double unit = unitOf(joint);
    moved.values[index] = value * unit;
    constexpr double rounding = 1e-9; // of degrees that were written with many digits
    const double most = joint.upper / unit, least = joint.lower / unit;
    if (!joint.hasLimits() || (value >= least - rounding && value <= most + rounding))
        return {};
    return fmt::format("--joints: {:g} is beyond the limits of '{}', {:g} to {:g} {}: it stands at {:g}", value,
                       joint.name, least, most, joint.type == JointType::Prismatic ? "mm" : "degrees",
                       std::clamp(value, least, most));
}

} // namespace

std::vector<std::string> moveJoints(const std::vector<JointWish>& wishes)
{
    std::vector<Moved> all = allThatMove();
    if (all.empty())
        throw std::runtime_error("--joints: nothing here has joints that move");
    std::vector<std::string> notes;
    const auto note = [&notes](std::string text) {
        if (!text.empty())
            notes.push_back(std::move(text));
    };
    const auto unnamed =
        static_cast<std::size_t>(std::ranges::count_if(wishes, [](const JointWish& wish) { return !wish.joint; }));
    if (unnamed > all.front().joints.size())
        throw std::runtime_error(fmt::format("--joints: {} values, but {} has {} joints", unnamed,
                                             all.front().mechanism->getName(), all.front().joints.size()));
    std::size_t next = 0;
    for (const JointWish& wish : wishes) {
        if (!wish.joint) {
            note(give(all.front(), next++, wish.value));
            continue;
        }
        const bool isFound = std::ranges::any_of(all, [&](Moved& moved) {
            const auto found =
                std::ranges::find(moved.joints, *wish.joint, [](const Joint* joint) { return joint->name; });
            if (found == moved.joints.end())
                return false;
            note(give(moved, static_cast<std::size_t>(found - moved.joints.begin()), wish.value));
            return true;
        });
        if (!isFound)
            throw std::runtime_error(
                fmt::format("--joints: no joint that moves by itself is called '{}' (--list names them)", *wish.joint));
    }
    for (Moved& moved : all)
        moved.mechanism->setJointValues(moved.values);
    return notes;
}

} // namespace vrkview
