#pragma once

#include "edit/Change.h"

#include <memory>
#include <vector>

namespace vrk::layout {
class Mechanism;
}

namespace vrkview {

/// A mechanism gets other joint values; its links follow.
class MoveJoints : public Change {
public:
    /// @param values   of all joints that move, as `Mechanism::setJointValues` takes them.
    /// @param gesture  moves of one mechanism in one gesture, such as the drag of a slider, make one step; 0 for a step of
    ///                 its own.
    MoveJoints(std::shared_ptr<vrk::layout::Mechanism> mechanism, std::vector<double> values, int gesture = 0);

    bool isNeeded() const override { return after != before; }
    void apply() override;
    void revert() override;
    int id() const override;
    bool mergeWith(const QUndoCommand* next) override;

private:
    std::shared_ptr<vrk::layout::Mechanism> mechanism;
    std::vector<double> before;
    std::vector<double> after;
    int gesture;
};

} // namespace vrkview
