#pragma once

#include "canvas/SnapPlace.h"

#include "view/RegionOutline.h"

#include <optional>

namespace vrkview {

class ViewWidget;

/// The sign of a place that the mouse would take, over whatever lies before it, and the face or the edge highlighted.
///
/// Thread: the application's, which is the render thread.
class PlaceMark {
public:
    /// @param view  outlives this.
    explicit PlaceMark(ViewWidget& view);

    /// Of nothing where there is none.
    void show(const std::optional<SnapPlace>& place);

private:
    ViewWidget& view;
    std::optional<SnapPlace> shown;
    vrk::visual::RegionOutline mark;
};

} // namespace vrkview
