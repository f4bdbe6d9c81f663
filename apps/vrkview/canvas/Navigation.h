#pragma once

class QPointF;

namespace vrkview {

class ViewWidget;

/// How the mouse moves the camera: by the camera's own gestures, within the bounds of what is shown when each of them begins.
/// They are posted.
///
/// Thread: the application's, which is the render thread. Places are device pixels of the view.
class Navigation {
public:
    /// @param view  outlives this.
    explicit Navigation(ViewWidget& view) : view(view) {}

    /// Settles what is turned about, and shows it.
    void beginOrbit(const QPointF& place);
    void orbit(const QPointF& way);
    void endOrbit();
    void beginPan();
    /// From where the thing was grabbed: there it still lies under the mouse.
    void pan(const QPointF& from, const QPointF& way);
    /// @param notches  above 0 to come nearer.
    void zoom(const QPointF& place, int notches);

private:
    void bind();
    void bringUpToDate();

    ViewWidget& view;
};

} // namespace vrkview
