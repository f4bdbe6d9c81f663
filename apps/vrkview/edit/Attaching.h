#pragma once

#include "edit/Change.h"

#include "platform/layout/Layout.h"

#include <cstddef>
#include <optional>

namespace vrkview {

/// What carries a thing changes; the thing stays where it is in the world.
class AttachmentChange : public Change {
public:
    bool isNeeded() const override { return isOther; }
    void apply() override { put(after); }
    void revert() override { put(before); }

protected:
    /// @param carrier  0 where nothing carries it any more.
    AttachmentChange(const QString& text, unsigned thing, unsigned carrier);

private:
    struct State {
        std::optional<vrk::layout::Attachment> attachment;
        std::size_t position = 0; // in the list of attachments
        vrk::rob::Posed ownPose;  // which counts while nothing carries the thing
    };

    State read() const;
    void put(const State& state) const;

    unsigned thing;
    bool isOther;
    State before;
    State after;
};

/// A thing hangs on another from now on, in place of what carried it.
class AttachThing : public AttachmentChange {
public:
    AttachThing(unsigned thing, unsigned carrier);
    /// Whether the thing can be carried, and would not carry itself.
    static bool IsPossible(unsigned thing, unsigned carrier);
};

/// What is carried by another lies by itself again.
class DetachThing : public AttachmentChange {
public:
    explicit DetachThing(unsigned thing);
};

} // namespace vrkview
