#pragma once

#include "platform/task/DataItem.h"

#include <optional>

namespace vrk::task {

class MoveInst;
class Path;
class Task;

/// One step of a program. This one draws nothing: a call, a condition, or a move whose target nobody knows before it runs.
/// Its name is the text of the step.
///
/// Owner: its path. Thread: as every object of the model.
class VRK_EXPORT Instruction : public sdf::SdfObject {
public:
    Instruction(unsigned id, std::string text);
    ~Instruction() override;

    /// A move has a target; `MoveInst` is the class of all of them.
    virtual bool isMoveInst() const { return false; }
    virtual bool isRobTargetInst() const { return false; }
    virtual bool isJointTargetInst() const { return false; }

    /// The path that the instruction stands in; null before it enters one.
    Path* getPath() const { return path; }
    /// The task of that path; null where there is none.
    Task* getTask() const;
    /// The move that stands before in the path, whatever else stands between; empty for the first one.
    std::optional<MoveInst*> getPrevMoveInstruction() const;

    std::string remark; ///< why a step is not drawn that could be: "not known before it runs"
    unsigned line = 0;  ///< in the text of the program, from 1; 0 where there is no text

protected:
    Instruction(sdf::ModelType type, unsigned id, std::string text);

private:
    friend class Path;

    Path* path = nullptr;
    MoveInst* previousMove = nullptr;
};

/// How a robot goes to a target.
enum class Motion {
    Linear,
    Circular, ///< on the arc over a via point
    Joint,    ///< each joint on its own, so that the tool's way is no line
};

/// Whether the way to a target is drawn solid, or dashed because the tool does not follow the line. Circular ones are solid.
enum class MoveLine { Solid, Dashed };

/// A move to a target. A move without a target is an `Instruction`.
class VRK_EXPORT MoveInst : public Instruction {
public:
    /// @throws std::invalid_argument "a circular move is not dashed"
    MoveInst(unsigned id, std::string text, Motion motion, std::shared_ptr<DataItem> target,
             MoveLine line = MoveLine::Solid);
    ~MoveInst() override;

    bool isMoveInst() const override { return true; }
    bool isRobTargetInst() const override;
    bool isJointTargetInst() const override { return !isRobTargetInst(); }
    /// Every move is of the kind `MoveInst`; circular ones are of `CircularMoveInst` and dashed ones of `DashedMoveInst`, too.
    bool asType(sdf::ModelType wanted) const override;

    Motion getMotion() const { return motion; }
    bool isDashed() const { return getModelType() == sdf::ModelType::DashedMoveInst; }

    // What the move refers to; ids are 0 where there is none. The target and the circle item are robot targets of the
    // move's work object, or the target is a joint target.
    unsigned getTargetItemId() const { return idOf(target); }
    unsigned getCircleItemId() const { return idOf(circle); }
    unsigned getWObjItemId() const { return idOf(wobj); }
    unsigned getToolItemId() const { return idOf(tool); }
    /// Never null.
    const std::shared_ptr<DataItem>& getTargetItem() const { return target; }
    /// The via point; null unless the move is circular.
    const std::shared_ptr<DataItem>& getCircleItem() const { return circle; }
    const std::shared_ptr<WObjDataItem>& getWObjItem() const { return wobj; }
    const std::shared_ptr<ToolDataItem>& getToolItem() const { return tool; }
    /// @throws std::invalid_argument "a move needs a robot target or a joint target"
    void setTargetItem(std::shared_ptr<DataItem> item);
    /// @throws std::invalid_argument "only a circular move has a via point"
    void setCircleItem(std::shared_ptr<DataItem> item);
    void setWObjItem(std::shared_ptr<WObjDataItem> item) { wobj = std::move(item); }
    void setToolItem(std::shared_ptr<ToolDataItem> item) { tool = std::move(item); }

    std::string speed; ///< as told in the program: "v1000", "500mm/sec"
    std::string zone;  ///< likewise: "fine", "z20", "CNT100"

private:
    template <typename Item>
    static unsigned idOf(const std::shared_ptr<Item>& item)
    {
        return item ? item->getId() : 0;
    }

    Motion motion;
    std::shared_ptr<DataItem> target;
    std::shared_ptr<DataItem> circle;
    std::shared_ptr<WObjDataItem> wobj;
    std::shared_ptr<ToolDataItem> tool;
};

} // namespace vrk::task
