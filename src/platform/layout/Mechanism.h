#pragma once

#include "platform/layout/Assembly.h"

#include <boost/signals2/connection.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace vrk::layout {

class Frame;
class Wrist;

/// A rigid piece of a mechanism, made of parts. Its element holds "pose", relative to the mechanism, which follows the
/// joint values.
class VRK_EXPORT Link : public PartContainer {
public:
    Link(unsigned id, std::string name);
    ~Link() override;
};

enum class JointType {
    Fixed,
    Revolute,   ///< turns between its limits
    Continuous, ///< turns without end
    Prismatic,  ///< slides between its limits
};

/// How a joint follows another one of its mechanism: its value is `factor` times that one's, and `offset`. Of a joint that
/// slides and one that turns the factor is model units for a radian, or the other way round.
struct JointFollowing {
    std::string joint; ///< the name of the other one, which may follow another itself
    double factor = 1;
    double offset = 0; ///< in the units of the value

    bool operator==(const JointFollowing&) const = default;
};

/// What connects two links of a mechanism.
struct Joint {
    std::string name;
    JointType type = JointType::Fixed;
    unsigned parentLink = 0; ///< ids of links
    unsigned childLink = 0;
    rob::Posed origin;       ///< of the child in the parent while the value is 0
    rob::Dird axis{0, 0, 1}; ///< of unit length, in the child
    double lower = 0;        ///< radians or model units, as the value; fixed and continuous joints have no limits
    double upper = 0;
    double value = 0;
    std::optional<JointFollowing> follows{}; ///< of a joint that moves

    bool isMoving() const { return type != JointType::Fixed; }
    /// Whether it has a value of its own: it moves, and follows none.
    bool isDriven() const { return isMoving() && !follows; }
    bool hasLimits() const { return type == JointType::Revolute || type == JointType::Prismatic; }
};

struct LinkPose {
    unsigned id = 0;
    rob::Posed pose; ///< relative to the mechanism
};

/// Links that joints connect, so that they move against each other. Manipulators, tools and devices are mechanisms.
///
/// The joints form trees: a link hangs on one joint at most, and no joint leads back. A link that hangs on none keeps the
/// pose that it was given. Every link is placed relative to the mechanism itself, not to the link that it hangs on.
///
/// It is put together before it enters the station, as a `PartContainer` is.
class VRK_EXPORT Mechanism : public sdf::SdfContainer {
public:
    ~Mechanism() override;

    const std::vector<std::shared_ptr<Link>>& getLinks() const { return links; }
    void addLink(std::shared_ptr<Link> link);
    /// Objects with a name and a pose and nothing else.
    const std::vector<std::shared_ptr<sdf::SdfNode>>& getPlainChildren() const { return plainChildren; }
    void addPlainChild(std::shared_ptr<sdf::SdfNode> child);

    const std::vector<Joint>& getJoints() const { return joints; }
    /// Appends a joint and places what hangs on it. The value is held to the limits.
    /// @throws std::invalid_argument "a joint connects links of its mechanism", "a link hangs on one joint only",
    ///         "joints must not form a loop", "a joint needs finite numbers", "a joint's axis has length 1",
    ///         "the lower limit of a joint lies above the upper one", "a joint slides up to 1e12 either way",
    ///         "a fixed joint follows none".
    void addJoint(Joint joint);
    /// The joint that has the value which moves this one: itself, or the end of those that it follows. Null where these lead
    /// nowhere, or in a ring; it stays at its value then.
    const Joint* driverOf(const Joint& joint) const;

    /// The values of the joints that are driven, in order: radians, or model units of prismatic ones.
    std::vector<double> getJointValues() const;
    std::size_t jointValueCount() const;
    /// The values of all joints, in order, for these of the driven ones, which are not held to their limits; followers are.
    std::vector<double> valuesOfAllJoints(std::span<const double> driven) const;
    /// Moves the joints, holding each value to its limits, and those that follow them, places the links and calls the receivers of `OnLinksMoved`. Takes
    /// the manager's unique lock and releases it before the receivers are called, which may take it themselves.
    /// @throws std::invalid_argument "one value for each joint that moves", "joint values must be finite"; nothing has
    ///         moved then.
    void setJointValues(std::span<const double> values);
    /// The poses of the links that hang on joints, for the present joint values. Call it under the manager's lock.
    std::vector<LinkPose> getLinkPoses() const;

    /// Calls `receiver` with every link that a change of joint values has placed anew, on the thread that changes them.
    static boost::signals2::connection OnLinksMoved(std::function<void(const std::vector<LinkPose>&)> receiver);

    bool asType(sdf::ModelType wanted) const override;
    std::vector<std::shared_ptr<sdf::SdfObject>> getPieces() const override;

protected:
    using Pieces = std::vector<std::shared_ptr<sdf::SdfObject>>;

    Mechanism(sdf::ModelType type, unsigned id, std::string name);
    bool hasLink(unsigned id) const;

private:
    const Joint* jointAbove(unsigned link) const;
    void placeLinks();
    void placeBelow(const Joint& joint);

    std::vector<std::shared_ptr<Link>> links;
    std::unordered_map<unsigned, Link*> linkOfId;
    std::vector<std::shared_ptr<sdf::SdfNode>> plainChildren;
    std::vector<Joint> joints;
    std::unordered_map<unsigned, std::size_t> jointOfChild;        // by the id of the link that hangs on it
    std::unordered_multimap<unsigned, std::size_t> jointsOfParent; // by the id of the link that they hang on
    bool hasFollowers = false;
};

/// A robot arm. Its element holds "pose" and "vendor": the maker in small letters, such as "kuka", or empty.
class VRK_EXPORT Manipulator : public Mechanism {
public:
    /// Makes the wrist and the controller task frame, with these ids.
    Manipulator(unsigned id, std::string name, unsigned wristId, unsigned taskFrameId);
    /// The same with ids from the manager.
    Manipulator(unsigned id, std::string name);
    ~Manipulator() override;

    std::string getVendor() const;
    void setVendor(const std::string& vendor);

    const std::shared_ptr<Wrist>& getWrist() const { return wrist; }
    /// Puts the wrist on a link, or on the manipulator itself, where it is at first.
    /// @param on  the id of one of these.
    /// @throws std::invalid_argument "the wrist lies on its manipulator or one of its links"
    void placeWrist(unsigned on, const rob::Posed& pose);
    /// The frame in which the robot's controller tells positions; its pose is in the world.
    const std::shared_ptr<Frame>& getControllerTaskFrame() const { return controllerTaskFrame; }

    std::vector<std::shared_ptr<sdf::SdfObject>> getPieces() const override;

private:
    std::shared_ptr<Wrist> wrist;
    std::shared_ptr<Frame> controllerTaskFrame;
};

/// What a robot holds: a gripper, a torch, with the frames that it works at.
class VRK_EXPORT Tool : public Mechanism {
public:
    Tool(unsigned id, std::string name);
    ~Tool() override;

    /// Their poses are relative to the tool.
    const std::vector<std::shared_ptr<Frame>>& getFrames() const { return frames; }
    void addFrame(std::shared_ptr<Frame> frame);
    std::vector<std::shared_ptr<sdf::SdfObject>> getPieces() const override;

private:
    std::vector<std::shared_ptr<Frame>> frames;
};

/// A machine of the station: a positioner, a conveyor, with frames on it and on its links.
class VRK_EXPORT Device : public Mechanism {
public:
    Device(unsigned id, std::string name);
    ~Device() override;

    const std::vector<std::shared_ptr<Frame>>& getFrames() const { return frames; }
    /// @param on  the device's own id or that of one of its links, which becomes the frame's parent.
    /// @throws std::invalid_argument "a device's frame lies on the device or one of its links"
    void addFrame(std::shared_ptr<Frame> frame, unsigned on);
    std::vector<std::shared_ptr<sdf::SdfObject>> getPieces() const override;

private:
    std::vector<std::shared_ptr<Frame>> frames;
};

} // namespace vrk::layout
