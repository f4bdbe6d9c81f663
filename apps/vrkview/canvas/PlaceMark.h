#pragma once

#include "canvas/RegionOutline.h"
#include "canvas/SnapPlace.h"

#include <optional>

namespace vrkview {

class ViewWidget;

/// The sign of a place that the mouse would take, over whatever lies before it, and the face or the edge highlighted.
///
/// Thread: the application's, which is the render thread.
class PlaceMark {
public:
    /// @param view  outlives this.
    explicit PlaceMark(ViewWidget& view) : view(view) {}

    /// Of nothing where there is none.
    void show(const std::optional<SnapPlace>& place);

private:
    ViewWidget& view;
    std::optional<SnapPlace> shown;
    RegionOutline mark;
};

} // namespace vrkview
