#pragma once

#include "preview/marks/PreviewedJointVisual.h"
#include "visual/FrameVisual.h"
#include "visual/WatchedVisual.h"

#include <unordered_map>

namespace vrk::visual {

/// The previewed frames by the ids that the application gave them; one that dies is forgotten. A record of the scene.
/// Thread: render thread.
struct PreviewedFrames {
    explicit PreviewedFrames(SceneCore& core)
    {
        core.visuals.whenDeleted([this](const Visual* dying) {
            std::erase_if(byId, [dying](const auto& each) { return each.second == dying; });
        });
    }
    PreviewedFrames(const PreviewedFrames&) = delete;
    PreviewedFrames& operator=(const PreviewedFrames&) = delete;

    std::unordered_map<unsigned, FrameVisual*> byId;
};

/// A record of the scene. Thread: render thread, but for the question whether there is one, which its removal asks on its
/// caller's thread.
struct PreviewedJoint : WatchedVisual<PreviewedJointVisual> {
    using WatchedVisual::WatchedVisual;
};

} // namespace vrk::visual
