#include "recording/Recorder.h"

#include "canvas/MoveTool.h"
#include "canvas/Pick.h"
#include "canvas/Picked.h"
#include "canvas/RegionTool.h"
#include "canvas/Surroundings.h"
#include "docks/JointDock.h"
#include "recording/Session.h"
#include "window/ViewWindow.h"

#include "canvas/DrawMode.h"
#include "canvas/ViewWidget.h"

#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/sdf/SdfManager.h"
#include "view/Camera.h"

#include <QAction>
#include <QEvent>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <shared_mutex>
#include <stdexcept>

namespace vrkview {
namespace {

using Json = nlohmann::ordered_json;

const char* nameOf(Mouse::Purpose purpose)
{
    switch (purpose) {
    case Mouse::Purpose::Click:
        return "click";
    case Mouse::Purpose::Orbit:
        return "orbit";
    case Mouse::Purpose::Focus:
        return "focus";
    default:
        return "hover";
    }
}

std::vector<unsigned> hiddenThings(const StationTree& tree)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    std::vector<unsigned> ids = vrk::layout::Layout::inst().visibilities;
    std::erase_if(ids, [&tree](unsigned id) { return tree.find(id) == StationTree::none; });
    return ids;
}

std::map<unsigned, std::vector<double>> jointValues()
{
    std::map<unsigned, std::vector<double>> values;
    for (const auto& mechanism : allMechanisms())
        if (mechanism->jointValueCount() > 0)
            values[mechanism->getId()] = mechanism->getJointValues();
    return values;
}

} // namespace

Json describePick(Mouse::Purpose purpose, const Picked* found)
{
    Json text = {{"pick", nameOf(purpose)}, {"thing", found ? found->thing : 0}};
    if (found)
        text.update(describe(found->candidate));
    return text;
}

Json describeRegion(const RegionContent& content)
{
    Json points = Json::array();
    for (const auto& [id, numbers] : content.points)
        points.push_back({id, numbers.size()});
    return {{"pick", "region"}, {"things", content.things}, {"points", points}};
}

Recorder::Recorder(ViewWindow& window, const std::filesystem::path& file) : window(window), file(file), stream(file)
{
    if (!stream)
        throw std::runtime_error(fmt::format("{}: the recording cannot be written", file.string()));
    ViewWidget& view = window.getView();
    connect(&view, &ViewWidget::drained, this, [this, &view] {
        if (!hasBegun && view.isReady())
            begin();
    });
    view.requestFrame();
}

Recorder::~Recorder() = default;

void Recorder::begin()
{
    hasBegun = true;
    clock.start();
    const ViewWidget& view = window.getView();
    SessionHead head{window.getFiles().getTitle().toStdString(),
                     view.toDevice(view.size()),
                     window.getSettings().mouseStyle(),
                     window.getMouse().getClickRadius(),
                     window.getState().getDrawMode().name,
                     isGridShown(),
                     {},
                     vrk::visual::Camera::Get()->getWorldPose(),
                     {},
                     window.getMover().getSteps()};
    for (const ProgramPartName& each : allProgramParts())
        head.programParts.emplace_back(each.part, isDrawn(each.part));
    for (const PickGroupName& each : allPickGroups())
        head.pickGroups.emplace_back(each.group, window.getMouse().getPick().takes(each.group));
    stream << toJson(head).dump() << std::endl;
    forgetChanges();
    listen();
}

void Recorder::listen()
{
    Mouse& mouse = window.getMouse();
    connect(&mouse, &Mouse::handling, this, [this](const InputEvent& event) {
        writeChanges();
        write(toJson(event));
        isOfMouse = true;
    });
    connect(&mouse, &Mouse::picked, this, &Recorder::writePick);
    connect(&mouse, &Mouse::candidateClicked, this, [this](int row, Qt::KeyboardModifiers modifiers) {
        Json step = {{"event", "candidate"}, {"row", row}};
        step.update(toJson(modifiers));
        write(std::move(step));
    });
    connect(&mouse, &Mouse::handled, this, [this] {
        isOfMouse = false;
        forgetChanges();
    });
    connect(&window.getRegion(), &RegionTool::taken, this, &Recorder::writeRegion);
    connect(&window.getMover(), &MoveTool::typing, this, [this](const QString& key) {
        write({{"event", "type"}, {"key", key.toStdString()}});
    });
    for (QAction* command : window.QWidget::actions())
        if (!command->shortcut().isEmpty()) // others ask, or change the station: these are not recorded
            connect(command, &QAction::triggered, this, [this, command] { writeKey(*command); });

    ViewState& state = window.getState();
    connect(&state, &ViewState::selectionChanged, this, &Recorder::writeChanges, Qt::QueuedConnection);
    connect(&state, &ViewState::visibilityChanged, this, &Recorder::writeChanges, Qt::QueuedConnection);
    connect(&window.getJointDock(), &JointDock::jointsMoved, this, &Recorder::writeJoints);
    connect(&window.getFiles().getOpening(), &FileOpening::opened, this,
            [this](const auto&, const FileOpening::Files& files) { writeOpened(files); });
    connect(&window.getFlight(), &CameraFlight::interrupted, this, [this](const vrk::rob::Posef& pose) {
        write({{"event", "camera"}, {"pose", toJson(pose)}});
    });
    connect(&window.getSettings(), &Settings::mouseStyleChanged, this, [this] {
        write({{"event", "mouse"}, {"style", vrkview::nameOf(window.getSettings().mouseStyle())}});
    });
    connect(&window.getMover(), &MoveTool::snappingChanged, this, [this](bool isSnapping) {
        write({{"event", "snap"}, {"on", isSnapping}});
    });
    connect(&window.getMover(), &MoveTool::stepsChanged, this, [this] {
        write({{"event", "steps"}, {"steps", toJson(window.getMover().getSteps())}});
    });
    window.getView().installEventFilter(this);
}

bool Recorder::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize) {
        const ViewWidget& view = window.getView();
        write({{"event", "resize"}, {"view", toJson(view.toDevice(view.size()))}});
    }
    return QObject::eventFilter(watched, event);
}

void Recorder::write(Json step)
{
    Json line = {{"time", clock.elapsed()}};
    line.update(step);
    stream << line.dump(-1, ' ', false, Json::error_handler_t::replace)
           << std::endl; // what is written outlives a crash
}

void Recorder::writePick(Mouse::Purpose purpose, const Picked* found)
{
    write(describePick(purpose, found));
}

void Recorder::writeRegion(const RegionContent& content)
{
    if (isOfMouse)
        write(describeRegion(content));
    else
        results.push_back(describeRegion(content));
}

void Recorder::writeKey(const QAction& command)
{
    write({{"event", "key"}, {"key", command.shortcut().toString(QKeySequence::PortableText).toStdString()}});
    for (const Json& result : std::exchange(results, {}))
        write(result);
    forgetChanges();
}

void Recorder::writeOpened(const std::vector<std::filesystem::path>& files)
{
    // What lies beside the recording or below it moves along with it.
    const std::filesystem::path folder = std::filesystem::absolute(file).parent_path();
    Json paths = Json::array();
    for (const std::filesystem::path& opened : files) {
        const std::filesystem::path whole = std::filesystem::absolute(opened);
        const std::filesystem::path below = whole.lexically_relative(folder);
        paths.push_back((below.empty() || *below.begin() == ".." ? whole : below).string());
    }
    write({{"event", "open"}, {"files", paths}});
    forgetChanges();
}

void Recorder::writeJoints(int gesture)
{
    for (auto& [id, values] : jointValues())
        if (joints[id] != values) {
            write({{"event", "joints"}, {"id", id}, {"values", values}, {"gesture", gesture}});
            joints[id] = std::move(values);
        }
}

void Recorder::writeChanges()
{
    const ViewState& state = window.getState();
    if (state.getSelected() != selected)
        write({{"event", "select"}, {"ids", state.getSelected()}});
    if (const std::vector<unsigned> now = hiddenThings(state.getTree()); now != hidden)
        write({{"event", "hide"}, {"ids", now}});
    forgetChanges();
}

void Recorder::forgetChanges()
{
    selected = window.getState().getSelected();
    hidden = hiddenThings(window.getState().getTree());
    joints = jointValues();
}

} // namespace vrkview
