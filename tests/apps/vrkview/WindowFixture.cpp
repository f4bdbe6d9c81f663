#include "WindowFixture.h"

#include "FakeInput.h"
#include "canvas/DrawMode.h"
#include "canvas/Surroundings.h"
#include "demo/DemoStation.h"
#include "files/StationScene.h"
#include "start/StartUp.h"

#include "platform/broker/SignalBroker.h"
#include "scene/Scene.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScreen>

#include <chrono>
#include <memory>
#include <thread>

namespace vrkview::test {
namespace {

using vrk::visual::Scene;

constexpr qint64 patience = 20000; // milliseconds: a loaded machine with a software driver

std::unique_ptr<ViewWindow> shared;
int framesDrawn = 0;
boost::signals2::scoped_connection ticks;

void turnFor(qint64 milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < milliseconds)
        QApplication::processEvents(QEventLoop::AllEvents, 20);
}

} // namespace

bool waitFor(const std::function<bool()>& reached)
{
    QElapsedTimer timer;
    timer.start();
    while (!reached()) {
        if (timer.elapsed() > patience)
            return false;
        QApplication::processEvents(QEventLoop::AllEvents, 20);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

void closeWindow()
{
    ticks.disconnect();
    shared.reset();
}

void WindowFixture::SetUpTestSuite()
{
    if (shared)
        return;
    static const Station demo = demoStation(); // its files may be read again when it is saved
    startLibrary();
    showStation(demo);
    Scene::Get()->processMsgs();
    showAs(*findDrawMode("shaded-edges"), demo.hiddenFaces);
    Scene::Get()->processMsgs();
    suitSurroundings();
    Scene::Get()->processMsgs();
    shared = std::make_unique<ViewWindow>(demo, *findDrawMode("shaded-edges"));
    ticks = vrk::broker::SignalBroker::onFrameTicked([](double) { ++framesDrawn; });
    shared->show();
}

void WindowFixture::SetUp()
{
    ASSERT_TRUE(waitFor([] { return framesDrawn > 0; }));
    settle();
    window().activateWindow(); // there is no window manager that would
    ASSERT_TRUE(waitFor([] { return window().isActiveWindow(); }));
    view().setFocus();
    moveMouse(view(), view().rect().center());
}

ViewWindow& WindowFixture::window()
{
    return *shared;
}

int WindowFixture::frames()
{
    return framesDrawn;
}

void WindowFixture::settle()
{
    int before = -1;
    while (before != framesDrawn || view().isFrameRequested()) { // after work that took the whole while
        before = framesDrawn;
        turnFor(400);
    }
}

QImage WindowFixture::seen()
{
    const QPoint corner = view().mapToGlobal(QPoint(0, 0));
    return shared->screen()->grabWindow(0, corner.x(), corner.y(), view().width(), view().height()).toImage();
}

QImage WindowFixture::after(const char* key)
{
    typeKey(key);
    settle();
    return seen();
}

void WindowFixture::shoot(const char* name)
{
    if (const QString folder = qEnvironmentVariable("VRK_SHOTS"); !folder.isEmpty())
        shared->screen()->grabWindow(0).save(folder + "/" + name + ".png");
}

} // namespace vrkview::test
