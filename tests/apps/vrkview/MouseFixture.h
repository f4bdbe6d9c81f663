#pragma once

#include "WindowFixture.h"
#include "canvas/Mouse.h"

#include "scene/math/Pose.h"
#include "selection/geometry/Result.h"

namespace vrkview::test {

/// The shared window in the view from its start, with nothing selected, and the mouse of the display over it.
class MouseFixture : public WindowFixture {
protected:
    void SetUp() override;
    void TearDown() override;

    static Mouse& mouse() { return window().getMouse(); }
    static ViewState& state() { return window().getState(); }
    /// The topmost thing of the station of this name.
    static unsigned thing(const std::string& name);
    // Places are in logical pixels from the view's top left corner.

    /// Where a click would take this thing; its middle most likely.
    static QPoint placeOf(const std::string& name);
    /// One with nothing under it.
    static QPoint emptyPlace();
    static QPointF inPixels(const QPoint& place);
    /// What a pick of the library finds there.
    static vrk::selection::Result resultAt(const QPoint& place);
    static vrk::rob::Posef camera();

    /// Moves the mouse there and has the window take notice.
    static void moveTo(const QPoint& place);
    static void clickAt(const QPoint& place, unsigned button = 1);
    /// In steps, and releases the button.
    static void drag(unsigned button, const QPoint& from, const QPoint& to);
    static void turnWheel(const QPoint& place, int notches);
    static void leaveView();
};

} // namespace vrkview::test
