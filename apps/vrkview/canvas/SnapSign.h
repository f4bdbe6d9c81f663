#pragma once

#include "canvas/RegionOutline.h"
#include "canvas/SnapPlace.h"

#include <optional>

namespace vrkview {

class ViewWidget;

/// Shows what a tool would take under the mouse: the sign of the place, over whatever lies before it, with the face or the
/// edge highlighted.
///
/// Thread: the application's, which is the render thread.
class SnapSign {
public:
    /// @param view  outlives this.
    explicit SnapSign(ViewWidget& view) : view(view) {}

    /// In place of what was shown.
    void show(const SnapPlace& place);
    void hide();
    const std::optional<SnapPlace>& getShown() const { return shown; }

private:
    void change(const std::optional<SnapPlace>& place);

    ViewWidget& view;
    std::optional<SnapPlace> shown;
    RegionOutline mark;
};

} // namespace vrkview
