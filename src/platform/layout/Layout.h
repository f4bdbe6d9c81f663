#pragma once

#include "platform/common/Export.h"
#include "platform/layout/Dimension.h"
#include "scene/math/Pose.h"

#include <memory>
#include <unordered_set>
#include <vector>

namespace sdf {
class SdfObject;
}
namespace vrk::smartcomp {
class SmartComponent;
}
namespace vrk::task {
class Operation;
class Task;
} // namespace vrk::task

namespace vrk::layout {

class Assembly;
class Device;
class Frame;
class Group;
class Manipulator;
class Mechanism;
class Part;
class PointCloud;
class Tool;

/// An object that is carried along by another, at a pose relative to it.
struct Attachment {
    unsigned child = 0;
    unsigned parent = 0;
    rob::Posed pose;
};

/// What stands in a station, in model order.
///
/// `assemblies` and `parts` hold the members of assemblies and links as well; those are not standalone. The other lists
/// hold what stands by itself.
struct VRK_EXPORT StationContent {
    std::vector<std::shared_ptr<Manipulator>> manipulators;
    std::vector<std::shared_ptr<Assembly>> assemblies;
    std::vector<std::shared_ptr<Part>> parts;
    std::vector<std::shared_ptr<PointCloud>> pointclouds;
    std::vector<std::shared_ptr<Tool>> tools;
    std::vector<std::shared_ptr<Device>> devices;
    std::vector<std::shared_ptr<Frame>> frames;
    std::vector<std::shared_ptr<Group>> groups;
    std::vector<std::shared_ptr<smartcomp::SmartComponent>> components;
    std::vector<std::shared_ptr<task::Task>> tasks;
    std::vector<std::shared_ptr<task::Operation>> operations;
    std::vector<Attachment> attachments;
    std::vector<unsigned> visibilities; ///< the ids of what is hidden
    std::vector<unsigned> reaches;      ///< the ids of the manipulators whose reach is shown
    /// None is null. One that is changed is exchanged, so that it is known by its pointer.
    std::vector<std::shared_ptr<const Dimension>> dimensions;
    rob::Posed lastViewPointPose; ///< of the camera; identity means none

    /// Every object with its pieces, in model order.
    std::vector<std::shared_ptr<sdf::SdfObject>> objects() const;
    /// Enters the parts and assemblies that `object` owns into the lists.
    void listMembers(const sdf::SdfObject& object);
};

/// The station of the process.
///
/// Thread: guarded by the lock of `sdf::SdfManager`, as the objects are. The operations that change it take that lock.
class VRK_EXPORT Layout : public StationContent {
public:
    static Layout& inst();

    // Each appends an object; it and what it owns enter the object table.
    void addManipulator(std::shared_ptr<Manipulator> manipulator);
    void addAssembly(std::shared_ptr<Assembly> assembly);
    void addPart(std::shared_ptr<Part> part);
    void addPointCloud(std::shared_ptr<PointCloud> cloud);
    void addTool(std::shared_ptr<Tool> tool);
    void addDevice(std::shared_ptr<Device> device);
    /// A manipulator, tool or device, by what it is.
    void addMechanism(std::shared_ptr<Mechanism> mechanism);
    void addFrame(std::shared_ptr<Frame> frame);
    void addGroup(std::shared_ptr<Group> group);
    void addSmartComponent(std::shared_ptr<smartcomp::SmartComponent> component);
    void addTask(std::shared_ptr<task::Task> task);
    void addOperation(std::shared_ptr<task::Operation> operation);

    /// Removes a standalone object, or a member of an assembly, with what it owns, and the tool data and edge runs that lie on these, from the station
    /// and the object table. Groups, operations, attachments, `visibilities` and `reaches` forget the ids, and dimensions of
    /// them go; other things that lay on them lie on the world then. An unknown id does nothing. Remove a point cloud's
    /// visual first: it reads the points.
    void remove(unsigned id);
    void removePart(unsigned id) { remove(id); }
    void removePointCloud(unsigned id) { remove(id); }
    void clear();
    /// Puts another station in place of this one in one go; the objects of the old one leave the table.
    void replace(StationContent content);

    /// Notes that `child` is carried by `parent`, in place of what carried it before.
    void addAttachment(unsigned child, unsigned parent, const rob::Posed& pose);
    void removeAttachment(unsigned child);
    /// Notes whether an object is hidden.
    void setHidden(unsigned id, bool hidden);
    /// @throws std::invalid_argument "a dimension has as many ends as its type says"
    void addDimension(std::shared_ptr<const Dimension> dimension);
    /// One that is not there does nothing.
    void removeDimension(const std::shared_ptr<const Dimension>& dimension);

private:
    Layout() = default;
    void forget(const std::unordered_set<unsigned>& gone);
};

} // namespace vrk::layout
