#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"
#include "view/RegionOutline.h"
#include "view/ViewBounds.h"

#include <functional>
#include <optional>

namespace vrk::selection {
struct RegionAnswer;
struct Result;
} // namespace vrk::selection

namespace vrk::visual {

class Camera;

/// Moves a camera by the mouse, and says what is under it, what is clicked and what a rectangle takes: what an application has to
/// do with its mouse events over a view.
///
/// The middle button orbits about the place under the mouse; with Shift, or by the right button, that place follows the mouse; a
/// notch of the wheel goes a sixth of the way there, or back. Where nothing is under the mouse the middle of what is shown tells how
/// far away things are. Unlike by the gestures of `Camera` the eye stays in `ViewBounds`, and so does the place that a gesture is
/// about, so that no gesture runs away.
///
/// The left button with Shift draws a rectangle, where somebody listens for what it takes.
///
/// Places are device pixels of the camera's target, from its top left corner. Without a target, nothing happens.
/// Thread: render thread. Each call takes effect at once; draw a frame then. Owner: the application; the camera outlives it.
class VRK_EXPORT Navigator {
public:
    enum class Button { Left, Middle, Right };

    explicit Navigator(Camera& camera);

    /// How many pixels the user sees as one, 1 at first: points and lines count within five of those.
    void setDevicePixelRatio(double ratio) { devicePixelRatio = ratio; }

    void press(Button button, double x, double y, bool isShiftDown = false);
    /// Also while no button is down: then `onHover` is told what is under the mouse.
    void move(double x, double y);
    /// A button that went up where it went down, or nearly so, is a click. A rectangle is asked about then.
    void release(Button button, double x, double y);
    /// @param notches  above 0 away from the user, which goes nearer; parts of one from fine wheels. What is no number is 0, and
    ///                 more than 20 at once are 20.
    void turnWheel(double x, double y, double notches);
    /// The drag ends, and is no click; a rectangle takes nothing.
    void cancel();
    bool isDragging() const { return drag != Drag::None; }

    /// What was clicked by the left button, as `PickQuery` finds it; a click on nothing, too.
    std::function<void(const selection::Result&)> onClick;
    /// What is under the mouse; nothing, once it is not over anything any more.
    std::function<void(const selection::Result&)> onHover;

    /// From where it was begun to where the mouse is.
    struct Rectangle {
        double fromX, fromY, toX, toY;

        bool operator==(const Rectangle&) const = default;
        /// Drawn to the left it takes what it touches, else what lies wholly inside.
        bool takesWhatIsTouched() const { return toX < fromX; }
    };
    /// The bodies, frames, curves, single points and points of clouds that a rectangle took, seen or hidden by others, as
    /// `RegionQuery` finds them. The rectangle is drawn over the picture meanwhile.
    std::function<void(const selection::RegionAnswer&)> onRegion;
    /// The rectangle at each move; nothing when it ends, ahead of `onRegion`. For who shows more than its outline.
    std::function<void(const std::optional<Rectangle>&)> onRectangle;

private:
    enum class Drag { None, Click, Orbit, Pan, Rectangle };

    selection::Result pick(double x, double y) const;
    bool hasPixels() const;
    void takePlace(double x, double y);
    void orbit(double dx, double dy);
    void pan(double dx, double dy);
    void place(const rob::Posed& pose);
    void showRectangle();
    Rectangle endRectangle();
    selection::RegionAnswer ask(const Rectangle& rectangle) const;

    Camera& camera;
    Drag drag = Drag::None;
    Button held = Button::Left;
    double startX = 0, startY = 0, lastX = 0, lastY = 0;
    bool mayBeRectangle = false; // what is held would become one
    rob::Posd focus;             // of the present gesture
    ViewBounds bounds;           // likewise
    RegionOutline outline;
    double devicePixelRatio = 1;
};

} // namespace vrk::visual
