#include "canvas/ViewWidget.h"

#include "canvas/Surroundings.h"

#include "platform/broker/SignalBroker.h"
#include "scene/Scene.h"
#include "scene/ViewLook.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"
#include "view/RenderFrame.h"
#include "view/WindowTarget.h"

#include <QCursor>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QScreen>
#include <QWheelEvent>
#include <QWindow>

#include <utility>

namespace vrkview {
namespace {

using vrk::broker::SignalBroker;
using vrk::visual::Camera;
using vrk::visual::WindowTarget;

constexpr unsigned antialiasing = 4; // samples for each pixel

/// From now on, with the outline of what is selected, which a new target starts without.
void drawInto(auto* target)
{
    Camera::Get()->setRenderTarget(target);
    vrk::visual::Scene& scene = *vrk::visual::Scene::Get();
    if (!scene.getSelectedVisuals().empty())
        scene.setBorderHighlightEnabled(true);
}

} // namespace

ViewWidget::ViewWidget(QWidget* parent) : QWidget(parent)
{
    // The library draws all of it: Qt must neither clear it nor paint on it.
    setAttribute(Qt::WA_NativeWindow);
    setAttribute(Qt::WA_PaintOnScreen);
    setAttribute(Qt::WA_NoSystemBackground);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(160, 120);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus); // a click takes the keys from the docks

    const QSize pixels = toDevice(size());
    window = std::make_unique<WindowTarget>(winId(), static_cast<unsigned>(pixels.width()),
                                            static_cast<unsigned>(pixels.height()), antialiasing);
    window->setDevicePixelRatio(devicePixelRatioF());
    Camera::Get()->setRenderTarget(window->renderTarget());
    native = std::make_unique<ForeignWindow>(
        window->nativeHandle(), [this] { requestFrame(); }, [this] { leave(); });
    connect(windowHandle(), &QWindow::screenChanged, this, &ViewWidget::fitToWidget); // its pixels may be others
    sceneChanged = SignalBroker::onUpdateScene([this] { requestFrame(); });
    connect(&shade, &FrameShade::frameWanted, this, &ViewWidget::requestFrame);
    connect(&coarse, &CoarseFrames::changed, this, &ViewWidget::coarsenessChanged);
    connect(&coarse, &CoarseFrames::rested, this, [this] {
        shade.noteRest();
        requestFrame();
    });
    cameraMoved = SignalBroker::onCameraMoved([this] {
        shade.noteMove();
        coarse.noteMove();
        if (!isDraining) // the frame of the move is the one that comes next anyway
            requestFrame();
    });
}

// The members go while the native window of the widget stands, which the target needs.
ViewWidget::~ViewWidget() = default;

QSize ViewWidget::toDevice(const QSize& logical) const
{
    return (QSizeF(logical) * devicePixelRatioF()).toSize();
}

QPointF ViewWidget::toDevice(const QPointF& logical) const
{
    return logical * devicePixelRatioF();
}

void ViewWidget::requestFrame()
{
    if (!isRequested.exchange(true))
        QMetaObject::invokeMethod(this, &ViewWidget::drawFrame, Qt::QueuedConnection);
}

void ViewWidget::paintEvent(QPaintEvent*)
{
    requestFrame();
}

void ViewWidget::resizeEvent(QResizeEvent*)
{
    fitToWidget();
}

void ViewWidget::mousePressEvent(QMouseEvent* event)
{
    emit mousePressed(toDevice(event->position()), event->button(), event->modifiers());
}

void ViewWidget::mouseReleaseEvent(QMouseEvent* event)
{
    emit mouseReleased(toDevice(event->position()), event->button(), event->modifiers());
}

void ViewWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    emit mouseDoubleClicked(toDevice(event->position()), event->button(), event->modifiers());
}

void ViewWidget::mouseMoveEvent(QMouseEvent* event)
{
    // The display tells at once that the mouse has left, while moves wait in Qt's queue: one from before comes behind that.
    const auto isHere = [this] { return rect().contains(mapFromGlobal(QCursor::pos())); };
    if (!isMouseInside && event->buttons() == Qt::NoButton && !isHere())
        return;
    isMouseInside = true;
    emit mouseMoved(toDevice(event->position()), event->buttons(), event->modifiers());
}

void ViewWidget::leaveEvent(QEvent*)
{
    leave();
}

void ViewWidget::leave()
{
    if (std::exchange(isMouseInside, false)) // Qt and the display may both tell
        emit mouseLeft();
}

void ViewWidget::wheelEvent(QWheelEvent* event)
{
    constexpr double unitsOfANotch = 120;
    emit wheelTurned(toDevice(event->position()), event->angleDelta().y() / unitsOfANotch, event->modifiers());
}

void ViewWidget::fitToWidget()
{
    const QSize pixels = toDevice(size());
    attempt([this, pixels] {
        window->resize(static_cast<unsigned>(pixels.width()), static_cast<unsigned>(pixels.height()));
        window->setDevicePixelRatio(devicePixelRatioF());
    });
    requestFrame();
}

QImage ViewWidget::takePicture(const QSize& pixels)
{
    // Twice the size and then averaged: the samples smooth only the edges of triangles, not the highlights within.
    constexpr int scale = 2;
    constexpr unsigned samples = 4;
    const vrk::visual::OffscreenTarget target(static_cast<unsigned>(scale * pixels.width()),
                                              static_cast<unsigned>(scale * pixels.height()), samples);
    drawInto(target.renderTarget());
    enlargeCross(scale); // its size is in pixels
    vrk::visual::SetDepthShade(isDepthShaded());
    if (isGroundShadowed())
        vrk::visual::TakeGroundShadow();
    vrk::visual::renderFrame();
    const std::vector<std::uint8_t> bytes = target.read();
    drawInto(window->renderTarget());
    enlargeCross(1.0f / scale);
    requestFrame();
    const QSize drawn = pixels * scale;
    return QImage(bytes.data(), drawn.width(), drawn.height(), 3 * drawn.width(), QImage::Format_RGB888)
        .scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

void ViewWidget::attempt(const std::function<void()>& work)
{
    try {
        work();
    } catch (const std::exception& failure) {
        emit failed(QString::fromUtf8(failure.what())); // it must not pass through Qt's event loop
    }
}

void ViewWidget::drain()
{
    const QScopedValueRollback draining(isDraining, true);
    attempt([this] {
        vrk::visual::Scene::Get()->processMsgs();
        isDraining = false;
        emit drained();
    });
}

void ViewWidget::drawFrame()
{
    // First, so that a request during the frame, for what it may have missed, makes another one.
    isRequested = false;
    const bool isDrawable = isVisible(); // it has its size by then
    if (isDrawable && !std::exchange(wasDrawable, true))
        attempt([this] { emit ready(); });
    drain();
    if (!isDrawable)
        return;
    coarse.begin();
    shade.begin();
    attempt(vrk::visual::renderFrame);
    shade.end();
    coarse.end();
}

} // namespace vrkview
