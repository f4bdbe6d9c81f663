#pragma once

#include "platform/common/Export.h"

#include <memory>

namespace vrk::visual {

class Visual;

/// Notes whether one of some visuals has died, also where another one stands at its address or under its id by then: for who
/// keeps pointers to visuals that it does not own.
///
/// Thread: render thread, after the start. Owner: who watches.
class VRK_EXPORT VisualWatch {
public:
    VisualWatch();
    ~VisualWatch();
    VisualWatch(const VisualWatch&) = delete;
    VisualWatch& operator=(const VisualWatch&) = delete;

    /// One more, which is alive now.
    void add(const Visual* visual);
    bool hasAnyDied() const;
    /// Watches none.
    void clear();

private:
    struct State;

    std::unique_ptr<State> state; // while any is watched
};

} // namespace vrk::visual
