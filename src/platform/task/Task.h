#pragma once

#include "platform/sdf/SdfObject.h"

#include <memory>
#include <vector>

namespace vrk::task {

class DataItem;
class EdgeMfgShape;
class Path;
class WObjDataItem;

/// A robot program. Its children are its paths, its manufacturing shapes and its data items; the parent of a data item is
/// that item's owner and not the task. The task's own parent is the object it belongs to, most often a manipulator.
class VRK_EXPORT Task : public sdf::SdfContainer {
public:
    Task(unsigned id, std::string name);
    ~Task() override;

    unsigned getOwnerId() const { return getParentId(); }
    void setOwnerId(unsigned id) { setParentId(id); }
    /// The robot that runs the program; 0 where there is none yet.
    unsigned getManipulatorId() const { return manipulatorId; }
    void setManipulatorId(unsigned id) { manipulatorId = id; }

    /// The ids of the paths, in order.
    const std::vector<unsigned>& getPaths() const { return pathIds; }
    /// Names a path that is kept elsewhere.
    void addPath(unsigned id) { pathIds.push_back(id); }
    /// The paths that the task keeps itself.
    const std::vector<std::shared_ptr<Path>>& getOwnPaths() const { return paths; }
    void addPath(std::shared_ptr<Path> path);
    void removePath(unsigned id);
    const std::vector<std::shared_ptr<EdgeMfgShape>>& getMfgShapes() const { return shapes; }
    void addMfgShape(std::shared_ptr<EdgeMfgShape> shape);
    void removeMfgShape(unsigned id);
    const std::vector<std::shared_ptr<DataItem>>& getDataItems() const { return items; }
    void addDataItem(std::shared_ptr<DataItem> item);
    /// Brings the items into the order that they have in `order`; those that it does not name stand last, as they stood.
    void orderDataItems(const std::vector<std::shared_ptr<DataItem>>& order);
    /// Moves forget the work object, tool or via point that goes.
    /// @throws std::invalid_argument "a move needs this target" for the target of a move; nothing is removed then.
    void removeDataItem(unsigned id);
    /// Puts the object frame of a work object elsewhere in its user frame, with the robot targets that lie in it.
    void moveObjectFrame(WObjDataItem& wobj, const rob::Posed& pose);
    std::vector<std::shared_ptr<sdf::SdfObject>> getPieces() const override;

private:
    unsigned manipulatorId = 0;
    std::vector<unsigned> pathIds;
    std::vector<std::shared_ptr<DataItem>> items;
    std::vector<std::shared_ptr<Path>> paths;
    std::vector<std::shared_ptr<EdgeMfgShape>> shapes;
};

/// A step of production. It gathers the objects that take part in it; these are shown selected where it is selected.
class VRK_EXPORT Operation : public sdf::SdfObject {
public:
    Operation(unsigned id, std::string name);
    ~Operation() override;

    void addMember(unsigned id) { memberIds.push_back(id); }
    void removeMember(unsigned id) { std::erase(memberIds, id); }
    const std::vector<unsigned>& getMemberIds() const { return memberIds; }
    /// Members that the object table does not know are left out.
    void getMembers(std::vector<sdf::SdfObject*>& members) const override;

private:
    std::vector<unsigned> memberIds;
};

/// The programs of the station, in order. Call it under the manager's lock.
VRK_EXPORT std::vector<Task*> GetAllTasks();

} // namespace vrk::task
