#pragma once

#include "canvas/CoarseFrames.h"
#include "canvas/ForeignWindow.h"
#include "canvas/FrameShade.h"

#include <boost/signals2/connection.hpp>

#include <QImage>
#include <QWidget>

#include <atomic>
#include <functional>
#include <memory>

namespace vrk::visual {
class WindowTarget;
}

namespace vrkview {

/// The 3D view: a widget whose whole area the library draws. Keys and the mouse go to Qt, as for any widget.
///
/// A frame is drawn when the scene asks for one, when the camera moves and when the window is shown, uncovered or
/// resized; many reasons at once make one frame. One at a time, since there is one scene.
///
/// Thread: the application's, which is the render thread. The scene may ask for a frame from any thread.
class ViewWidget : public QWidget {
    Q_OBJECT

public:
    /// Needs a started library.
    explicit ViewWidget(QWidget* parent = nullptr);
    ~ViewWidget() override;

    /// Logical to device pixels: what Qt says of sizes and of the mouse is in the former, the library uses the latter.
    QSize toDevice(const QSize& logical) const;
    QPointF toDevice(const QPointF& logical) const;

    /// Draws in the next turn of the event loop. Any thread.
    void requestFrame();
    /// Whether `ready` was told.
    bool isReady() const { return wasDrawable; }
    bool isFrameRequested() const { return isRequested; }
    /// Has the scene work off what was posted, at once: whoever asks it what is where gets the answer of now. Render thread.
    void drain();
    /// What the view shows, drawn anew with this many pixels and smoothed edges. At once.
    QImage takePicture(const QSize& pixels);
    QPaintEngine* paintEngine() const override { return nullptr; }

signals:
    // The mouse, in device pixels from the view's top left corner. Whoever navigates or picks listens here.
    void mousePressed(const QPointF& place, Qt::MouseButton button, Qt::KeyboardModifiers modifiers);
    void mouseReleased(const QPointF& place, Qt::MouseButton button, Qt::KeyboardModifiers modifiers);
    void mouseDoubleClicked(const QPointF& place, Qt::MouseButton button, Qt::KeyboardModifiers modifiers);
    /// @param buttons  those that are held down; none while the mouse hovers.
    void mouseMoved(const QPointF& place, Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers);
    void mouseLeft();
    /// @param notches  of the wheel, above 0 away from the user; parts of one from fine wheels and touchpads.
    void wheelTurned(const QPointF& place, double notches, Qt::KeyboardModifiers modifiers);

    /// The scene has worked off what was posted, whether or not a frame was drawn then.
    void drained();
    /// @param coarseness  of what is drawn next.
    void coarsenessChanged(vrk::visual::Coarseness coarseness);
    /// The view has its size on the screen, which fitting needs. Once, ahead of the first frame.
    void ready();
    /// What the scene was asked to do has failed; the picture is as before.
    void failed(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void leave();
    void drawFrame();
    /// Tells of a failure instead of passing it on.
    void attempt(const std::function<void()>& work);
    void fitToWidget();

    std::unique_ptr<vrk::visual::WindowTarget> window;
    FrameShade shade;
    CoarseFrames coarse;
    std::unique_ptr<ForeignWindow> native; // the same one, as the display sees it
    std::atomic<bool> isRequested = false;
    bool wasDrawable = false;
    bool isMouseInside = false;
    bool isDraining = false; // the scene works off what was posted
    boost::signals2::scoped_connection sceneChanged;
    boost::signals2::scoped_connection cameraMoved;
};

} // namespace vrkview
