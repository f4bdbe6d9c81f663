#pragma once

#include "edit/Change.h"

#include "scene/math/Pose.h"

#include <vector>

namespace vrkview {

/// Things of their own, work objects or targets of moves get other places on what they hang on. What hangs on them goes
/// along, and so do the ways to and from a target.
class MoveThings : public Change {
public:
    struct Place {
        unsigned thing = 0;
        vrk::rob::Posed pose; ///< relative to what the thing hangs on

        bool operator==(const Place&) const = default;
    };

    /// @param gesture  moves of the same things in one gesture, such as a drag, make one step; 0 for a step of its own.
    explicit MoveThings(std::vector<Place> places, int gesture = 0);
    MoveThings(unsigned thing, const vrk::rob::Posed& pose, int gesture = 0);

    bool isNeeded() const override { return after != before; }
    void apply() override { put(after); }
    void revert() override { put(before); }
    int id() const override;
    bool mergeWith(const QUndoCommand* next) override;

private:
    static void put(const std::vector<Place>& places);

    std::vector<Place> before;
    std::vector<Place> after;
    int gesture;
};

} // namespace vrkview
