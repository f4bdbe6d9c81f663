#pragma once

#include "platform/common/Export.h"
#include "visual/VisualStateManager.h"

namespace vrk::visual {

/// A layer that a visual has while this object lives.
///
/// It is the application's own mark, of which the scene's records of what is selected and highlighted know nothing: they
/// neither count it nor end it. Two marks of one kind on one visual end together, with the first of them.
///
/// Thread: any, at a time when the station is not being changed; the layer is set and taken away by posts. The visual may
/// die first if it is registered.
class VRK_EXPORT VisualMark {
public:
    VisualMark(const VisualMark&) = delete;
    VisualMark& operator=(const VisualMark&) = delete;

protected:
    VisualMark(Visual* visual, VisualStateLayer layer);
    ~VisualMark();

private:
    void postLayer(bool on) const;

    Visual* visual; // may be dead
    unsigned id;
    bool isRegistered;
    VisualStateLayer layer;
};

/// Highlights a visual while it lives.
class VRK_EXPORT HighlightedVisual : public VisualMark {
public:
    explicit HighlightedVisual(Visual* visual) : VisualMark(visual, VisualStateLayer::Highlighted) {}
};

/// Shows a visual as selected while it lives.
class VRK_EXPORT SelectedVisual : public VisualMark {
public:
    explicit SelectedVisual(Visual* visual) : VisualMark(visual, VisualStateLayer::Selected) {}
};

} // namespace vrk::visual
