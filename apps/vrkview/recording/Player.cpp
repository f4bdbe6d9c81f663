#include "recording/Player.h"

#include "canvas/CameraFlight.h"
#include "canvas/DrawMode.h"
#include "canvas/Mouse.h"
#include "canvas/MoveTool.h"
#include "canvas/RegionTool.h"
#include "canvas/RobotReaches.h"
#include "canvas/Surroundings.h"
#include "canvas/ViewWidget.h"
#include "docks/JointDock.h"
#include "edit/History.h"
#include "edit/MoveJoints.h"
#include "recording/Recorder.h"
#include "window/ViewWindow.h"

#include "platform/layout/Mechanism.h"
#include "view/Camera.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QWheelEvent>

#include <fmt/format.h>

#include <algorithm>

namespace vrkview {
namespace {

using Json = nlohmann::ordered_json;
using Kind = InputEvent::Kind;

constexpr qint64 patience = 120000; // milliseconds for one step; large files take their time

QEvent::Type typeOf(Kind kind)
{
    switch (kind) {
    case Kind::Press:
        return QEvent::MouseButtonPress;
    case Kind::Release:
        return QEvent::MouseButtonRelease;
    case Kind::DoubleClick:
        return QEvent::MouseButtonDblClick;
    default:
        return QEvent::MouseMove;
    }
}

} // namespace

Player::Player(ViewWindow& window, const Session& session) : window(window), session(session)
{
    window.getView().installEventFilter(this);
    window.getFiles().askBeforeLoss({}); // there is nobody to answer
    connect(&window.getMouse(), &Mouse::picked, this,
            [this](Mouse::Purpose purpose, const Picked* found) { picks.push_back(describePick(purpose, found)); });
    window.getMouse().setLongPress(0); // one that was long stands in the recording as the key that it stood for
    connect(&window.getRegion(), &RegionTool::taken, this,
            [this](const RegionContent& content) { picks.push_back(describeRegion(content)); });
    // The lines behind the first one are advice to who sits before the window.
    const auto note = [this](const QString& text) { failure = text.section('\n', 0, 0).toStdString(); };
    connect(&window.getFiles(), &StationFiles::failed, this, note);
    connect(&window.getView(), &ViewWidget::failed, this, note);
}

void Player::play()
{
    begin();
    for (const SessionLine& line : session.lines) {
        const std::string place = fmt::format("{}: line {}: ", session.file.string(), line.number);
        try {
            playLine(line);
        } catch (const SessionDifference& difference) {
            throw SessionDifference(place + difference.what());
        } catch (const std::exception& cause) {
            throw std::runtime_error(place + cause.what());
        }
    }
    try {
        expectNoMorePicks();
    } catch (const SessionDifference& difference) {
        throw SessionDifference(fmt::format("{}: at the end: {}", session.file.string(), difference.what()));
    }
}

void Player::begin()
{
    const SessionHead& head = session.head;
    const std::string title = window.getFiles().getTitle().toStdString();
    if (title != head.station)
        throw std::runtime_error(fmt::format("{}: recorded with '{}', but what is shown is '{}'", session.file.string(),
                                             head.station, title));
    waitUntil([this] { return window.getView().isReady(); });
    settle();
    resizeView(head.view);
    window.getSettings().setMouseStyle(head.mouse);
    window.getMouse().setClickRadius(head.clickRadius);
    window.getState().setDrawMode(*findDrawMode(head.display));
    showGrid(head.grid);
    for (const auto& [part, drawn] : head.programParts)
        draw(part, drawn);
    for (const auto& [group, isTaken] : head.pickGroups)
        window.getMouse().getPick().setTaken(group, isTaken);
    window.getMover().setSteps(head.moveSteps);
    moveCamera(head.camera);
    settle();
    picks.clear();
}

void Player::playLine(const SessionLine& line)
{
    const Json& step = line.content;
    if (step.contains("pick")) {
        checkPick(step);
        return;
    }
    expectNoMorePicks();
    act(step);
    settle();
    if (!failure.empty())
        throw std::runtime_error(failure);
}

void Player::act(const Json& step)
{
    const std::string event = step.at("event").get<std::string>();
    ViewState& state = window.getState();
    if (isInput(step)) {
        send(inputFrom(step));
    } else if (event == "key") {
        pressKey(step.at("key").get<std::string>());
    } else if (event == "type") {
        typeKey(step.at("key").get<std::string>());
    } else if (event == "camera") {
        moveCamera(poseFrom(step.at("pose")));
    } else if (event == "resize") {
        resizeView(sizeFrom(step.at("view")));
    } else if (event == "mouse") {
        window.getSettings().setMouseStyle(styleFrom(step.at("style")));
    } else if (event == "snap") {
        window.getMover().setSnapping(step.at("on").get<bool>());
    } else if (event == "steps") {
        window.getMover().setSteps(stepsFrom(step.at("steps")));
    } else if (event == "select") {
        state.selectVisuals(knownThings(step.at("ids")));
    } else if (event == "hide") {
        state.hideOnly(knownThings(step.at("ids"))); // one step of work, as it was
    } else if (event == "candidate") {
        window.getMouse().takeCandidate(step.at("row").get<int>(), modifiersFrom(step));
    } else if (event == "open") {
        open(step.at("files").get<std::vector<std::string>>());
    } else {
        moveJoints(step.at("id").get<unsigned>(), step.at("values").get<std::vector<double>>(),
                   step.value("gesture", 0));
    }
}

void Player::checkPick(const Json& recorded)
{
    if (picks.empty())
        throw SessionDifference(fmt::format("a pick was recorded, but none is made now: {}", recorded.dump()));
    Json expected = recorded;
    expected.erase("time");
    const std::string difference = differenceOf(expected, picks.front());
    if (!difference.empty())
        throw SessionDifference(fmt::format("the pick differs: {}\n  then: {}\n  now:  {}", difference, expected.dump(),
                                            picks.front().dump()));
    picks.pop_front();
}

void Player::expectNoMorePicks() const
{
    if (!picks.empty())
        throw SessionDifference(fmt::format("a pick is made now that was not recorded: {}", picks.front().dump()));
}

bool Player::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Leave:
    case QEvent::Wheel:
        return !isSending; // the mouse of the display may lie over the window
    default:
        return QObject::eventFilter(watched, event);
    }
}

void Player::send(const InputEvent& event)
{
    const QScopedValueRollback sending(isSending, true);
    ViewWidget& view = window.getView();
    const QPointF place = event.place / view.devicePixelRatioF();
    const QPointF onScreen = view.mapToGlobal(place);
    if (event.kind == Kind::Leave) {
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(&view, &leave);
        return;
    }
    if (event.kind == Kind::Wheel) {
        constexpr double unitsOfANotch = 120;
        const QPoint turn(0, static_cast<int>(std::lround(event.notches * unitsOfANotch)));
        QWheelEvent wheel(place, onScreen, {}, turn, held, event.modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&view, &wheel);
        return;
    }
    if (event.kind == Kind::Press || event.kind == Kind::DoubleClick)
        held |= event.button;
    else if (event.kind == Kind::Release)
        held &= ~Qt::MouseButtons(event.button);
    else
        held = event.held;
    QMouseEvent mouse(typeOf(event.kind), place, onScreen, event.button, held, event.modifiers);
    QApplication::sendEvent(&view, &mouse);
}

void Player::resizeView(const QSize& pixels)
{
    constexpr int attempts = 5; // the docks take their part of the window
    const ViewWidget& view = window.getView();
    const auto missing = [&] { return pixels - view.toDevice(view.size()); };
    for (int i = 0; i < attempts && !missing().isNull(); ++i) {
        window.resize(window.size() + missing() / view.devicePixelRatioF());
        settle();
    }
    if (!missing().isNull())
        throw std::runtime_error(
            fmt::format("the view cannot be made {}x{} pixels large here", pixels.width(), pixels.height()));
}

void Player::pressKey(const std::string& key)
{
    const QKeySequence wanted = QKeySequence::fromString(QString::fromStdString(key), QKeySequence::PortableText);
    const QList<QAction*> commands = window.QWidget::actions();
    const auto hasKey = [&](const QAction* action) {
        return !wanted.isEmpty() && action->shortcuts().contains(wanted);
    };
    if (std::ranges::none_of(commands, hasKey))
        throw std::runtime_error(fmt::format("no command has the key '{}'", key));
    // One key may be that of several commands, of which one can be chosen at a time.
    const auto command =
        std::ranges::find_if(commands, [&](const QAction* action) { return hasKey(action) && action->isEnabled(); });
    if (command == commands.end())
        throw SessionDifference(fmt::format("the command of the key '{}' can not be chosen now", key));
    (*command)->trigger();
}

void Player::typeKey(const std::string& key)
{
    if (!window.getMover().type(QString::fromStdString(key)))
        throw SessionDifference(fmt::format("the key '{}' is for no number now", key));
}

void Player::open(const std::vector<std::string>& files)
{
    const std::filesystem::path folder = std::filesystem::absolute(session.file).parent_path();
    QStringList paths;
    for (const std::string& file : files)
        paths << QString::fromStdString((folder / file).string()); // an absolute path stays one
    window.getFiles().open(paths);
    waitUntil([this] { return !window.getFiles().getOpening().isRunning(); });
}

void Player::moveJoints(unsigned id, const std::vector<double>& values, int gesture)
{
    for (const auto& mechanism : allMechanisms())
        if (mechanism->getId() == id) {
            if (mechanism->jointValueCount() != values.size())
                throw std::runtime_error(fmt::format("{} values, but '{}' has {} joints", values.size(),
                                                     mechanism->getName(), mechanism->jointValueCount()));
            window.getState().getHistory().push(std::make_unique<MoveJoints>(mechanism, values, gesture));
            return;
        }
    throw std::runtime_error(fmt::format("nothing with joints has the id {}", id));
}

void Player::moveCamera(const vrk::rob::Posef& pose)
{
    vrk::visual::Camera::Get()->setWorldPose(pose);
}

std::vector<unsigned> Player::knownThings(const Json& ids) const
{
    const auto wanted = ids.get<std::vector<unsigned>>();
    for (const unsigned id : wanted)
        if (window.getState().getTree().find(id) == StationTree::none)
            throw std::runtime_error(fmt::format("nothing in the station has the id {}", id));
    return wanted;
}

void Player::settle()
{
    const ViewWidget& view = window.getView();
    QApplication::sendPostedEvents(); // layouts, and what joints tell the docks
    waitUntil([&] {
        window.getFlight().finish();
        return !view.isFrameRequested() && !window.getMouse().isMoveWaiting() && !window.getReaches().isRunning();
    });
}

void Player::waitUntil(const std::function<bool()>& reached) const
{
    QElapsedTimer timer;
    timer.start();
    while (!reached()) {
        if (timer.elapsed() > patience)
            throw std::runtime_error("the window does not come to rest");
        QApplication::processEvents(QEventLoop::AllEvents, 20);
    }
}

} // namespace vrkview
