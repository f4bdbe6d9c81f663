#include "MouseFixture.h"

#include "FakeInput.h"
#include "canvas/Pick.h"
#include "canvas/Picked.h"
#include "canvas/Views.h"

#include "selection/VisualSelection.h"
#include "selection/pick/PickQuery.h"
#include "view/Camera.h"

#include <QApplication>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

namespace vrkview::test {
namespace {

constexpr int gridStep = 8;      // logical pixels
constexpr int handleReach = 130; // it is as large as that on any screen
constexpr int dragSteps = 8;

std::array<int, 6> handled{}; // events of each kind
QPointF lastMove{-1, -1};

int& count(InputEvent::Kind kind)
{
    return handled[static_cast<std::size_t>(kind)];
}

/// Does something with the mouse of the display and waits for the window to deal with it.
void expect(InputEvent::Kind kind, const std::function<void()>& act)
{
    const int before = count(kind);
    act();
    EXPECT_TRUE(waitFor([&] { return count(kind) > before; }));
}

/// The second of two presses that follow each other quickly comes as a double click.
void expectPress(const std::function<void()>& act)
{
    const auto presses = [] { return count(InputEvent::Kind::Press) + count(InputEvent::Kind::DoubleClick); };
    const int before = presses();
    act();
    EXPECT_TRUE(waitFor([&] { return presses() > before; }));
}

void watch(const Mouse& mouse)
{
    static bool isWatching = false;
    if (std::exchange(isWatching, true))
        return;
    QObject::connect(&mouse, &Mouse::handling, [](const InputEvent& event) {
        ++count(event.kind);
        if (event.kind == InputEvent::Kind::Move)
            lastMove = event.place;
    });
}

} // namespace

void MouseFixture::SetUp()
{
    WindowFixture::SetUp();
    watch(mouse());
    mouse().setLongPress(0); // a busy machine may take long between a press and its release
    state().clear();
    state().showAll();
    lookAsLeft();
    settle();
}

void MouseFixture::TearDown()
{
    for (const unsigned button : {1u, 2u, 3u})
        releaseButton(button);
    window().getSettings().setMouseStyle(Settings::MouseStyle::OrbitWithMiddle);
    window().getFlight().finish();
    state().clear();
    state().showAll();
    settle();
}

unsigned MouseFixture::thing(const std::string& name)
{
    const auto& rows = state().getTree().getRows();
    const auto found = std::ranges::find(rows, name, &StationTree::Row::name);
    return found == rows.end() ? 0 : found->id;
}

QPoint MouseFixture::placeOf(const std::string& name)
{
    const unsigned wanted = thing(name);
    std::vector<QPoint> places;
    QPoint sum;
    for (int y = gridStep; y < view().height(); y += gridStep)
        for (int x = gridStep; x < view().width(); x += gridStep)
            if (const auto found = pickedAt({x, y}); found && found->thing == wanted) {
                places.emplace_back(x, y);
                sum += places.back();
            }
    EXPECT_FALSE(places.empty()) << name << " is not to be seen";
    if (places.empty())
        return {};
    const QPoint middle = sum / static_cast<int>(places.size());
    return *std::ranges::min_element(places, {}, [&](const QPoint& p) { return (p - middle).manhattanLength(); });
}

QPoint MouseFixture::placeOnHandle(vrk::visual::DragHandle::HandleType wanted, int step)
{
    const vrk::visual::DragHandle* handle = vrk::visual::DragHandle::Get();
    return placeOn(
        vrk::rob::Posd(handle->getWorldPosition()),
        [&](const vrk::visual::Visual* visual) { return handle->getHandleType(visual) == wanted; }, step);
}

QPoint MouseFixture::placeOn(const vrk::rob::Posd& at, const std::function<bool(const vrk::visual::Visual*)>& isWanted,
                             int step)
{
    view().drain();
    vrk::selection::VisualSelection::Get()->update();
    vrk::selection::PickQuery query;
    query.camera = vrk::selection::PickCamera::Main(view().devicePixelRatioF());
    query.radius = 1;
    std::vector<QPoint> found;
    const QRect around = QRect(-handleReach, -handleReach, 2 * handleReach, 2 * handleReach)
                             .translated(onScreen(at).toPoint())
                             .intersected(view().rect());
    for (int y = around.top(); y <= around.bottom(); y += step)
        for (int x = around.left(); x <= around.right(); x += step) {
            query.x = inPixels({x, y}).x();
            query.y = inPixels({x, y}).y();
            const auto best = query.askBest();
            if (best && isWanted(best->visual))
                found.emplace_back(x, y);
        }
    EXPECT_FALSE(found.empty()) << "the handle is not to be seen";
    return found.empty() ? QPoint() : found[found.size() / 2];
}

QPoint MouseFixture::emptyPlace()
{
    const QPoint corner(30, 30);
    EXPECT_FALSE(pickedAt(corner));
    return corner;
}

QPointF MouseFixture::inPixels(const QPoint& place)
{
    return QPointF(place) * view().devicePixelRatioF();
}

vrk::selection::Result MouseFixture::resultAt(const QPoint& place)
{
    const QPointF pixel = inPixels(place);
    return pickAt(static_cast<float>(pixel.x()), static_cast<float>(pixel.y())).result;
}

std::optional<Picked> MouseFixture::pickedAt(const QPoint& place, PickAim aim)
{
    view().drain();
    return mouse().getPick().at(inPixels(place), aim);
}

vrk::rob::Posef MouseFixture::camera()
{
    return vrk::visual::Camera::Get()->getWorldPose();
}

void MouseFixture::lookAt(const vrk::rob::Posd& place)
{
    const vrk::rob::Rotationf turn = camera().rotation();
    const vrk::rob::Posf eye = vrk::rob::Posf(place) + turn * vrk::rob::Vec3f(0, 0, 2000);
    vrk::visual::Camera::Get()->setWorldPose(vrk::rob::Posef(eye, turn));
    settle();
}

QPointF MouseFixture::onScreen(const vrk::rob::Posd& place)
{
    const vrk::rob::Posf seen =
        camera().inverse() *
        vrk::rob::Posf(static_cast<float>(place.x), static_cast<float>(place.y), static_cast<float>(place.z));
    const float slope = std::tan(vrk::visual::Camera::Get()->getVFOV() / 2);
    const float right = seen.x / -seen.z / (slope * vrk::visual::Camera::Get()->getAspectRatio());
    const float up = seen.y / -seen.z / slope;
    return {(1 + right) / 2 * static_cast<float>(view().width()), (1 - up) / 2 * static_cast<float>(view().height())};
}

void MouseFixture::moveTo(const QPoint& place)
{
    const auto isThere = [wanted = inPixels(place)] { // but for what the screen rounds
        return std::abs(lastMove.x() - wanted.x()) < 1 && std::abs(lastMove.y() - wanted.y()) < 1;
    };
    if (isThere()) // a display tells of moves only
        moveMouse(view(), place, 1);
    moveMouse(view(), place);
    EXPECT_TRUE(waitFor(isThere));
}

void MouseFixture::clickAt(const QPoint& place, unsigned button)
{
    moveTo(place);
    expectPress([button] { pressButton(button); });
    expect(InputEvent::Kind::Release, [button] { releaseButton(button); });
    waitFor([] { return !view().isFrameRequested(); });
}

void MouseFixture::drag(unsigned button, const QPoint& from, const QPoint& to)
{
    moveTo(from);
    expectPress([button] { pressButton(button); });
    for (int i = 1; i <= dragSteps; ++i)
        moveTo(from + (to - from) * i / dragSteps);
    expect(InputEvent::Kind::Release, [button] { releaseButton(button); });
    waitFor([] { return !view().isFrameRequested(); });
}

void MouseFixture::turnWheel(const QPoint& place, int notches)
{
    moveTo(place);
    const unsigned button = notches > 0 ? 4 : 5;
    for (int i = 0; i < std::abs(notches); ++i)
        expect(InputEvent::Kind::Wheel, [button] {
            pressButton(button);
            releaseButton(button);
        });
    waitFor([] { return !view().isFrameRequested(); });
}

void MouseFixture::leaveView()
{
    // To the status line: the docks beside show tool tips, which would lie over the view.
    const QPoint outside(view().width() / 2, view().height() + 8);
    expect(InputEvent::Kind::Leave, [&] { moveMouse(view(), outside); });
}

} // namespace vrkview::test
