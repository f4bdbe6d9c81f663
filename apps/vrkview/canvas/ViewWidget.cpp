#include "canvas/ViewWidget.h"

#include "canvas/Surroundings.h"

#include "platform/broker/SignalBroker.h"
#include "scene/Scene.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"

#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QScreen>
#include <QWheelEvent>
#include <QWindow>

#include <Ogre.h>

#include <utility>

namespace vrkview {
namespace {

using vrk::broker::SignalBroker;
using vrk::visual::Camera;

constexpr const char* windowName = "vrkview";
constexpr const char* antialiasing = "4"; // samples for each pixel

} // namespace

ViewWidget::ViewWidget(QWidget* parent) : QWidget(parent)
{
    // OGRE draws all of it: Qt must neither clear it nor paint on it.
    setAttribute(Qt::WA_NativeWindow);
    setAttribute(Qt::WA_PaintOnScreen);
    setAttribute(Qt::WA_NoSystemBackground);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(160, 120);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus); // a click takes the keys from the docks

    const QSize pixels = toDevice(size());
    const Ogre::NameValuePairList parameters = {
        {"parentWindowHandle", std::to_string(winId())}, {"FSAA", antialiasing}, {"vsync", "false"}};
    window = Ogre::Root::getSingleton().createRenderWindow(windowName, static_cast<unsigned>(pixels.width()),
                                                           static_cast<unsigned>(pixels.height()), false, &parameters);
    Camera::Get()->setRenderTarget(window);
    unsigned long handle = 0;
    window->getCustomAttribute("WINDOW", &handle);
    native = std::make_unique<ForeignWindow>(
        handle, [this] { requestFrame(); }, [this] { leave(); });
    connect(windowHandle(), &QWindow::screenChanged, this, &ViewWidget::fitToWidget); // its pixels may be others
    sceneChanged = SignalBroker::onUpdateScene([this] { requestFrame(); });
    cameraMoved = SignalBroker::onCameraMoved([this] {
        if (!isDraining) // the frame of the move is the one that comes next anyway
            requestFrame();
    });
}

ViewWidget::~ViewWidget()
{
    Camera::Get()->setRenderTarget(Ogre::Root::getSingleton().getRenderTarget("ogrewindow"));
    native.reset();
    // While the parent's native window stands: with it goes OGRE's own.
    Ogre::Root::getSingleton().destroyRenderTarget(window);
}

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
    native->resize(toDevice(size()));
    requestFrame();
}

bool ViewWidget::hasItsSize()
{
    const QSize pixels = toDevice(size());
    const auto agrees = [this, pixels] {
        return QSize(static_cast<int>(window->getWidth()), static_cast<int>(window->getHeight())) == pixels;
    };
    if (!agrees()) {
        window->windowMovedOrResized();
        Camera::Get()->updateFOV();
    }
    return agrees();
}

QImage ViewWidget::takePicture(const QSize& pixels)
{
    // Twice the size and then averaged: the samples smooth only the edges of triangles, not the highlights within.
    constexpr int scale = 2;
    constexpr unsigned samples = 4;
    Camera& camera = *Camera::Get();
    const vrk::visual::OffscreenTarget target(static_cast<unsigned>(scale * pixels.width()),
                                              static_cast<unsigned>(scale * pixels.height()), samples);
    camera.setRenderTarget(target.renderTarget());
    enlargeCross(scale); // its size is in pixels
    Ogre::Root::getSingleton().renderOneFrame();
    const std::vector<std::uint8_t> bytes = target.read();
    camera.setRenderTarget(window);
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
    // OGRE takes no size while the window is not on the screen; that it got there is told by an exposure.
    const bool isDrawable = isVisible() && hasItsSize();
    if (isDrawable && !std::exchange(wasDrawable, true))
        attempt([this] { emit ready(); });
    drain();
    if (isDrawable)
        attempt([] { Ogre::Root::getSingleton().renderOneFrame(); });
}

} // namespace vrkview
