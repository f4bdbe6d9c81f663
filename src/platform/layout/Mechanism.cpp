#include "platform/layout/Mechanism.h"

#include "platform/common/Checks.h"
#include "platform/layout/Frame.h"
#include "platform/sdf/SdfManager.h"

#include <boost/signals2/signal.hpp>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace vrk::layout {
namespace {

constexpr double unitTolerance = 1e-6;

using LinksMoved = boost::signals2::signal<void(const std::vector<LinkPose>&)>;

LinksMoved& linksMoved()
{
    static LinksMoved* const signal = new LinksMoved; // never freed, like the object table
    return *signal;
}

bool isFinite(const rob::Posed& pose)
{
    const rob::Orientd& o = pose.orientation;
    return pose.position.isFinite() && std::isfinite(o.w) && std::isfinite(o.x) && std::isfinite(o.y) &&
           std::isfinite(o.z);
}

double heldToLimits(const Joint& joint, double value)
{
    return joint.hasLimits() ? std::clamp(value, joint.lower, joint.upper) : value;
}

/// The child link in the parent link.
rob::Posed poseOf(const Joint& joint)
{
    switch (joint.type) {
    case JointType::Revolute:
    case JointType::Continuous:
        return joint.origin * rob::Posed(rob::Posd(), rob::Rotationd(joint.value, joint.axis));
    case JointType::Prismatic:
        return joint.origin * rob::Posed(rob::Posd(joint.axis * joint.value));
    case JointType::Fixed:
        break;
    }
    return joint.origin;
}

void checkNumbers(const Joint& joint)
{
    const bool finite =
        isFinite(joint.origin) && joint.axis.isFinite() && std::isfinite(joint.lower) && std::isfinite(joint.upper) &&
        std::isfinite(joint.value) &&
        (!joint.follows || (std::isfinite(joint.follows->factor) && std::isfinite(joint.follows->offset)));
    if (!finite)
        throw std::invalid_argument("a joint needs finite numbers");
    if (joint.isMoving() && std::abs(joint.axis.length() - 1) > unitTolerance)
        throw std::invalid_argument("a joint's axis has length 1");
    if (joint.follows && !joint.isMoving())
        throw std::invalid_argument("a fixed joint follows none");
    if (joint.hasLimits() && joint.lower > joint.upper)
        throw std::invalid_argument("the lower limit of a joint lies above the upper one");
    if (joint.type == JointType::Prismatic && std::max(-joint.lower, joint.upper) > common::farthestPlace)
        throw std::invalid_argument("a joint slides up to 1e12 either way");
}

} // namespace

Link::Link(unsigned id, std::string name) : PartContainer(sdf::ModelType::Link, id, std::move(name))
{
    setPose({});
}

Link::~Link() = default;

Mechanism::Mechanism(sdf::ModelType type, unsigned id, std::string name) : SdfContainer(type, id, std::move(name))
{
    setPose({});
}

Mechanism::~Mechanism() = default;

void Mechanism::addLink(std::shared_ptr<Link> link)
{
    addChild(*link);
    linkOfId[link->getId()] = link.get();
    links.push_back(std::move(link));
}

void Mechanism::addPlainChild(std::shared_ptr<sdf::SdfNode> child)
{
    addChild(*child);
    plainChildren.push_back(std::move(child));
}

bool Mechanism::hasLink(unsigned id) const
{
    return linkOfId.contains(id);
}

void Mechanism::addJoint(Joint joint)
{
    if (!hasLink(joint.parentLink) || !hasLink(joint.childLink))
        throw std::invalid_argument("a joint connects links of its mechanism");
    checkNumbers(joint);
    if (jointAbove(joint.childLink))
        throw std::invalid_argument("a link hangs on one joint only");
    // Upwards from the parent there is one way, and without the new joint it has an end.
    for (unsigned link = joint.parentLink;;) {
        if (link == joint.childLink)
            throw std::invalid_argument("joints must not form a loop");
        const Joint* above = jointAbove(link);
        if (!above)
            break;
        link = above->parentLink;
    }
    joint.value = joint.isMoving() ? heldToLimits(joint, joint.value) : 0;
    hasFollowers = hasFollowers || joint.follows;
    jointOfChild[joint.childLink] = joints.size();
    jointsOfParent.emplace(joint.parentLink, joints.size());
    joints.push_back(std::move(joint));
    if (!hasFollowers) {
        placeBelow(joints.back());
        return;
    }
    const std::vector<double> values = valuesOfAllJoints(getJointValues());
    for (std::size_t i = 0; i < joints.size(); ++i)
        joints[i].value = values[i];
    placeLinks();
}

const Joint* Mechanism::jointAbove(unsigned link) const
{
    const auto found = jointOfChild.find(link);
    return found == jointOfChild.end() ? nullptr : &joints[found->second];
}

const Joint* Mechanism::driverOf(const Joint& joint) const
{
    const Joint* driver = &joint;
    for (std::size_t steps = 0; driver->follows; ++steps) {
        const auto next = std::ranges::find(joints, driver->follows->joint, &Joint::name);
        if (next == joints.end() || steps == joints.size())
            return nullptr;
        driver = &*next;
    }
    return driver;
}

std::vector<double> Mechanism::getJointValues() const
{
    std::vector<double> values;
    for (const Joint& joint : joints) {
        if (joint.isDriven())
            values.push_back(joint.value);
    }
    return values;
}

std::size_t Mechanism::jointValueCount() const
{
    return static_cast<std::size_t>(std::ranges::count_if(joints, &Joint::isDriven));
}

std::vector<double> Mechanism::valuesOfAllJoints(std::span<const double> driven) const
{
    std::vector<double> values;
    std::unordered_map<std::string_view, std::size_t> byName;
    auto next = driven.begin();
    for (const Joint& joint : joints) {
        if (hasFollowers)
            byName.emplace(joint.name, values.size());
        values.push_back(joint.isDriven() ? *next++ : joint.value);
    }
    if (!hasFollowers)
        return values;
    // Each follower from the end of what it follows down to itself; those that lead nowhere stay.
    for (std::size_t i = 0; i < joints.size(); ++i) {
        if (!joints[i].follows || !driverOf(joints[i]))
            continue;
        std::vector<std::size_t> chain{i};
        while (joints[chain.back()].follows)
            chain.push_back(byName.at(joints[chain.back()].follows->joint));
        for (std::size_t at = chain.size() - 1; at-- > 0;) {
            const Joint& follower = joints[chain[at]];
            values[chain[at]] =
                heldToLimits(follower, follower.follows->factor * values[chain[at + 1]] + follower.follows->offset);
        }
    }
    return values;
}

void Mechanism::setJointValues(std::span<const double> values)
{
    std::vector<LinkPose> moved;
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        if (values.size() != jointValueCount())
            throw std::invalid_argument("one value for each joint that moves");
        if (!std::ranges::all_of(values, [](double value) { return std::isfinite(value); }))
            throw std::invalid_argument("joint values must be finite");
        auto value = values.begin();
        for (Joint& joint : joints) {
            if (joint.isDriven())
                joint.value = heldToLimits(joint, *value++);
        }
        if (hasFollowers) {
            const std::vector<double> all = valuesOfAllJoints(getJointValues());
            for (std::size_t i = 0; i < joints.size(); ++i)
                joints[i].value = all[i];
        }
        placeLinks();
        moved = getLinkPoses();
    }
    linksMoved()(moved);
}

std::vector<LinkPose> Mechanism::getLinkPoses() const
{
    std::unordered_set<unsigned> hanging;
    for (const Joint& joint : joints)
        hanging.insert(joint.childLink);
    std::vector<LinkPose> poses;
    for (const std::shared_ptr<Link>& link : links) {
        if (hanging.contains(link->getId()))
            poses.push_back({link->getId(), link->getPose()});
    }
    return poses;
}

void Mechanism::placeLinks()
{
    for (const Joint& joint : joints)
        if (!jointAbove(joint.parentLink))
            placeBelow(joint);
}

void Mechanism::placeBelow(const Joint& first)
{
    std::vector<const Joint*> open{&first};
    while (!open.empty()) {
        const Joint& joint = *open.back();
        open.pop_back();
        linkOfId[joint.childLink]->setPose(linkOfId[joint.parentLink]->getPose() * poseOf(joint));
        const auto [from, to] = jointsOfParent.equal_range(joint.childLink);
        for (auto below = from; below != to; ++below)
            open.push_back(&joints[below->second]);
    }
}

boost::signals2::connection Mechanism::OnLinksMoved(std::function<void(const std::vector<LinkPose>&)> receiver)
{
    return linksMoved().connect(std::move(receiver));
}

bool Mechanism::asType(sdf::ModelType wanted) const
{
    return wanted == sdf::ModelType::Mechanism || SdfContainer::asType(wanted);
}

Mechanism::Pieces Mechanism::getPieces() const
{
    Pieces pieces(links.begin(), links.end());
    pieces.insert(pieces.end(), plainChildren.begin(), plainChildren.end());
    return pieces;
}

Manipulator::Manipulator(unsigned id, std::string name, unsigned wristId, unsigned taskFrameId)
    : Mechanism(sdf::ModelType::Manipulator, id, std::move(name)), wrist(std::make_shared<Wrist>(wristId, "wrist")),
      controllerTaskFrame(std::make_shared<Frame>(taskFrameId, "task frame"))
{
    wrist->setParentId(getId());
    setVendor({});
}

Manipulator::Manipulator(unsigned id, std::string name)
    : Manipulator(id, std::move(name), sdf::SdfManager::inst().generateId(), sdf::SdfManager::inst().generateId())
{
}

Manipulator::~Manipulator() = default;

std::string Manipulator::getVendor() const
{
    return sdf::textAt(*getElement(), "vendor");
}

void Manipulator::setVendor(const std::string& vendor)
{
    getElement()->touch("vendor")->set(vendor);
}

void Manipulator::placeWrist(unsigned on, const rob::Posed& pose)
{
    if (on != getId() && !hasLink(on))
        throw std::invalid_argument("the wrist lies on its manipulator or one of its links");
    wrist->setParentId(on);
    wrist->setPose(pose);
}

Mechanism::Pieces Manipulator::getPieces() const
{
    Pieces pieces = Mechanism::getPieces();
    pieces.push_back(wrist);
    pieces.push_back(controllerTaskFrame);
    return pieces;
}

Tool::Tool(unsigned id, std::string name) : Mechanism(sdf::ModelType::Tool, id, std::move(name)) {}

Tool::~Tool() = default;

void Tool::addFrame(std::shared_ptr<Frame> frame)
{
    frame->setParentId(getId());
    frames.push_back(std::move(frame));
}

Mechanism::Pieces Tool::getPieces() const
{
    Pieces pieces = Mechanism::getPieces();
    pieces.insert(pieces.end(), frames.begin(), frames.end());
    return pieces;
}

Device::Device(unsigned id, std::string name) : Mechanism(sdf::ModelType::Device, id, std::move(name)) {}

Device::~Device() = default;

void Device::addFrame(std::shared_ptr<Frame> frame, unsigned on)
{
    if (on != getId() && !hasLink(on))
        throw std::invalid_argument("a device's frame lies on the device or one of its links");
    frame->setParentId(on);
    frames.push_back(std::move(frame));
}

Mechanism::Pieces Device::getPieces() const
{
    Pieces pieces = Mechanism::getPieces();
    pieces.insert(pieces.end(), frames.begin(), frames.end());
    return pieces;
}

} // namespace vrk::layout
