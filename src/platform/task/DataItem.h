#pragma once

#include "platform/sdf/SdfObject.h"

#include <memory>
#include <vector>

namespace vrk::task {

/// What the moves of a robot program refer to: a tool, a work object, a target. It belongs to a task and lies on its owner,
/// an object of the station, whose id is its parent id; 0 and the station's id mean the world. Its element holds "pose".
class VRK_EXPORT DataItem : public sdf::SdfNode {
public:
    ~DataItem() override;

    unsigned getOwnerId() const { return getParentId(); }
    void setOwnerId(unsigned id) { setParentId(id); }

protected:
    DataItem(sdf::ModelType type, unsigned id, std::string name);
};

/// A tool centre point: its pose is on the tool or robot that is its owner.
class VRK_EXPORT ToolDataItem : public DataItem {
public:
    ToolDataItem(unsigned id, std::string name);
    ~ToolDataItem() override;
};

/// A work object: the user frame, which is the item's pose, and on it the object frame.
class VRK_EXPORT WObjDataItem : public DataItem {
public:
    WObjDataItem(unsigned id, std::string name, unsigned objectFrameId);
    /// The same with an id from the manager.
    WObjDataItem(unsigned id, std::string name);
    ~WObjDataItem() override;

    /// Whether the user frame keeps its pose on the owner. One that does not is moved by its owner's motion alone.
    bool hasFixedUFrame() const { return fixedUFrame; }
    void setFixedUFrame(bool fixed) { fixedUFrame = fixed; }
    /// Its pose is in the user frame.
    const std::shared_ptr<sdf::SdfNode>& getObjectFrame() const { return objectFrame; }
    std::vector<std::shared_ptr<sdf::SdfObject>> getPieces() const override;

private:
    std::shared_ptr<sdf::SdfNode> objectFrame;
    bool fixedUFrame = true;
};

/// A posture of the task's manipulator: one value per joint that moves, in radians or model units.
class VRK_EXPORT JointTargetDataItem : public DataItem {
public:
    JointTargetDataItem(unsigned id, std::string name);
    ~JointTargetDataItem() override;

    std::vector<double> jointValues;
};

/// A place that a robot's tool moves to.
///
/// Its owner is the work object in which the program tells it. Its pose is relative to the user frame and includes the
/// object frame, because the visuals of moves hang on user frames. A target that is used in two work objects is two items.
class VRK_EXPORT RobTargetDataItem : public DataItem {
public:
    RobTargetDataItem(unsigned id, std::string name);
    ~RobTargetDataItem() override;
};

} // namespace vrk::task
