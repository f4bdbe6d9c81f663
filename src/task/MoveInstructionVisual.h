#pragma once

#include "task/PathParts.h"
#include "visual/Visual.h"

#include <memory>

namespace vrk::task {
class MoveInst;
}

namespace vrk::visual {

class InstanceFrameVisual;
class PathArrowVisual;
class RobtargetVisual;

/// A move of a robot program: the frame of its target, that of its via point if it is circular, and the arrow on the way
/// from the target before.
///
/// Owner: the parent visual, that of the work object. The move of the model is not owned. Thread: render thread.
class VRK_EXPORT MoveInstructionVisual : public Visual, public PartKeeper {
public:
    /// Registered, with its targets, and with its arrow where both moves go to robot targets of one work object.
    /// @param previous  null for none: there is no arrow then.
    /// @throws std::bad_cast if the target or the via point is not in the model; nothing is left then.
    static MoveInstructionVisual* Build(Visual* parent, const task::MoveInst* previous, task::MoveInst* move);
    ~MoveInstructionVisual() override;

    task::MoveInst* getMove() const { return moveInst; }
    /// Null where targets are switched off.
    InstanceFrameVisual* getTarget() const { return targetVisual; }
    /// The via point; null unless the move is circular.
    RobtargetVisual* getCircle() const { return circleVisual; }
    /// Null where there is none.
    PathArrowVisual* getArrow() const { return arrow; }

    /// Makes the targets, beside those that are there, or takes them away, as the scene says.
    void buildTargets();
    /// Makes the arrow, beside one that is there, or takes it away, as the scene says. Where the two moves go to is not asked.
    /// @param previous  null does nothing.
    void buildArrow(const task::MoveInst* previous);
    /// Shows where the targets of the move are in the model now, and makes the arrow anew.
    void updateFrom(task::MoveInst* move);
    /// The place in the world that the move goes to.
    rob::PosTemplate<float> getTargetInWorld() const;

    void setVisible(bool visible, bool recursive) override;
    void resetAppearance() override;
    void setSelected() override;
    // The arrow has one look for both.
    void setHighlighted() override;
    void clearHighlightOrSelect() override;
    void showLookOfWhole() override; // of its path
    void forgetPart(const Visual* part) override;

private:
    MoveInstructionVisual(Visual* parent, task::MoveInst* move);
    void removeTargets();
    void removeArrow();
    void adopt(InstanceFrameVisual& target);
    void letGoOfParts();
    template <typename Call>
    void forTargets(const Call& call);

    task::MoveInst* moveInst;
    unsigned pathId; // by itself: the move may be gone from the model when the end of a look comes
    InstanceFrameVisual* targetVisual = nullptr;
    RobtargetVisual* circleVisual = nullptr;
    std::shared_ptr<bool> isAlive; // null but while something is deleted that this may hang on
    PathArrowVisual* arrow = nullptr;
};

} // namespace vrk::visual
