#pragma once

#include "scene/core/SceneCore.h"
#include "visual/Visual.h"

#include <utility>

namespace vrk::visual {

/// A pointer to a visual that somebody else owns; null from the moment in which that dies.
///
/// Thread: render thread, but where the record that it is part of says otherwise.
template <typename AnyVisual>
class WatchedVisual {
public:
    explicit WatchedVisual(SceneCore& core)
    {
        core.visuals.whenDeleted([this](const Visual* dying) {
            if (visual == dying)
                visual = nullptr;
        });
    }
    WatchedVisual(const WatchedVisual&) = delete;
    WatchedVisual& operator=(const WatchedVisual&) = delete;

    AnyVisual* get() const { return visual; }
    AnyVisual* operator->() const { return visual; }
    explicit operator bool() const { return visual; }
    void set(AnyVisual* watched) { visual = watched; }
    /// Lets go of it.
    AnyVisual* take() { return std::exchange(visual, nullptr); }

private:
    AnyVisual* visual = nullptr;
};

} // namespace vrk::visual
