#pragma once

#include "edit/Change.h"

#include "scene/math/Pose.h"

namespace vrkview {

/// A thing of its own gets another place on what it hangs on.
class MoveThing : public Change {
public:
    /// @param pose     relative to what the thing hangs on.
    /// @param gesture  moves of one thing in one gesture, such as a drag, make one step; 0 for a step of its own.
    MoveThing(unsigned thing, const vrk::rob::Posed& pose, int gesture = 0);

    bool isNeeded() const override { return after != before; }
    void apply() override { place(after); }
    void revert() override { place(before); }
    int id() const override;
    bool mergeWith(const QUndoCommand* next) override;

private:
    void place(const vrk::rob::Posed& pose) const;

    unsigned thing;
    vrk::rob::Posed before;
    vrk::rob::Posed after;
    int gesture;
};

} // namespace vrkview
