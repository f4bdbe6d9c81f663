#pragma once

#include "WindowFixture.h"
#include "canvas/Mouse.h"

#include "handles/DragHandle.h"
#include "scene/math/Pose.h"
#include "selection/geometry/Result.h"

#include <functional>

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
    /// Where the mouse is on this piece of the handle; in the middle of its rows.
    /// @param step  between the places that are looked at: 1 for what is seen from its edge.
    static QPoint placeOnHandle(vrk::visual::DragHandle::HandleType wanted, int step = 2);
    /// A place near `at`, where a click would take a visual of a handle that is wanted.
    static QPoint placeOn(const vrk::rob::Posd& at, const std::function<bool(const vrk::visual::Visual*)>& isWanted,
                          int step = 2);
    /// One with nothing under it.
    static QPoint emptyPlace();
    static QPointF inPixels(const QPoint& place);
    /// What a pick of the library finds there.
    static vrk::selection::Result resultAt(const QPoint& place);
    /// What the mouse finds there.
    static std::optional<Picked> pickedAt(const QPoint& place, PickAim aim = PickAim::Thing);
    static vrk::rob::Posef camera();
    /// From the direction of the start, near by: the handle is large enough then, wherever the thing stands.
    static void lookAt(const vrk::rob::Posd& place);
    /// Where the view shows a place of the world.
    static QPointF onScreen(const vrk::rob::Posd& place);

    /// Moves the mouse there and has the window take notice.
    static void moveTo(const QPoint& place);
    static void clickAt(const QPoint& place, unsigned button = 1);
    /// In steps, and releases the button.
    static void drag(unsigned button, const QPoint& from, const QPoint& to);
    static void turnWheel(const QPoint& place, int notches);
    static void leaveView();
};

/// How much of one picture is not as in another of its size; all of it where the sizes differ.
inline double differingShare(const QImage& a, const QImage& b)
{
    if (a.size() != b.size())
        return 1;
    long count = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            count += a.pixel(x, y) != b.pixel(x, y) ? 1 : 0;
    return static_cast<double>(count) / (static_cast<double>(a.width()) * a.height());
}

} // namespace vrkview::test
