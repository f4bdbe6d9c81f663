#include "files/StationScene.h"

#include "files/EdgesOfMeshes.h"
#include "files/ObjectNames.h"
#include "files/Station.h"
#include "measure/StationDimensions.h"

#include "platform/common/Logger.h"
#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/ImportProgram.h"
#include "platform/task/DataItem.h"
#include "platform/task/EdgeMfgShape.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <shared_mutex>
#include <stdexcept>

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::layout::Layout;
using vrk::layout::LinkPose;
using vrk::layout::Manipulator;
using vrk::layout::Mechanism;
using vrk::layout::StationContent;
using vrk::visual::Scene;

void followJoints()
{
    static boost::signals2::scoped_connection following;
    following = Mechanism::OnLinksMoved([](const std::vector<LinkPose>& poses) {
        for (const LinkPose& link : poses)
            Scene::Get()->setVisualPose(link.id, vrk::rob::Posef(link.pose));
    });
}

/// The library gives an arm of no known maker one plain colour; here it has those of its bodies. Behind the posts that show it.
void showOwnColorsOfPlain(const std::shared_ptr<Mechanism>& mechanism)
{
    const auto* arm = dynamic_cast<const Manipulator*>(mechanism.get());
    if (arm && arm->getVendor().empty())
        Scene::Get()->bodiesUseOwnMaterials(arm->getId());
}

bool isOfStation(VisualType type)
{
    return typeName(type) || type == VisualType::Path || type == VisualType::MoveInstruction;
}

/// Takes the visuals of the things of the station out of the scene, and only these: the grid is the scene's own.
void removeVisuals()
{
    std::vector<unsigned> ids;
    {
        sdf::SdfManager& model = sdf::SdfManager::inst();
        const std::shared_lock lock(model.mutex());
        for (const vrk::visual::Visual* visual : Scene::GetWorldVisual()->getChildren())
            if (isOfStation(visual->getType()) && model.find(visual->getId()))
                ids.push_back(visual->getId());
    }
    for (const unsigned id : ids)
        Scene::Get()->removeVisual(id);
    Scene::Get()->processMsgs();
}

/// Posts the bands of all programs: on the bodies that are in the scene by then.
void addBands()
{
    std::vector<unsigned> bands, hidden;
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        for (const vrk::task::Task* task : vrk::task::GetAllTasks())
            for (const auto& band : task->getMfgShapes())
                bands.push_back(band->getId());
        hidden = Layout::inst().visibilities;
    }
    for (const unsigned band : bands) {
        Scene::Get()->addBand(band);
        if (std::ranges::find(hidden, band) != hidden.end())
            Scene::Get()->setVisualVisible(band, false);
    }
}

void loadStation()
{
    Scene::LoadStation();
    addBands();
    for (const auto& arm : Layout::inst().manipulators)
        showOwnColorsOfPlain(arm);
    addEdgesOfMeshes(0);
}

void replaceStation(const StationContent& content)
{
    removeVisuals();
    Layout::inst().replace(content);
    loadStation();
    Scene::Get()->processMsgs();
}

void runPosts()
{
    if (Scene* scene = Scene::Get())
        scene->processMsgs();
}

/// Enters the programs into the model, and tells what of them is not as their text may make one think.
void addPrograms(const Station& station)
{
    for (const vrk::program::Program& program : station.programs) {
        vrk::station::ProgramSummary summary;
        const auto task = vrk::station::AddProgram(program, summary);
        station.tasks.push_back(task);
        station.summaries.push_back(fmt::format("{}: {}", task->getName(), summary.text()));
        if (summary.placed < summary.moves)
            vrk::AppLogger::inst()->warn(station.summaries.back());
        constexpr std::size_t notesToTell = 5;
        for (std::size_t i = 0; i < summary.notes.size() && i < notesToTell; ++i)
            vrk::AppLogger::inst()->warn(
                fmt::format("{}: line {}: {}", task->getName(), summary.notes[i].line, summary.notes[i].text));
        if (summary.notes.size() > notesToTell)
            vrk::AppLogger::inst()->warn(
                fmt::format("{}: and {} more", task->getName(), summary.notes.size() - notesToTell));
    }
}

/// The tasks of the station's programs: new ones, or, where they were taken out again, the same as before.
void addTasks(const Station& station)
{
    if (station.tasks.empty())
        addPrograms(station);
    else
        for (const auto& task : station.tasks)
            Layout::inst().addTask(task);
}

void addObjects(const Station& station)
{
    Layout& layout = Layout::inst();
    std::vector<unsigned> ids;
    for (const auto& assembly : station.assemblies) {
        layout.addAssembly(assembly);
        ids.push_back(assembly->getId());
    }
    for (const auto& part : station.parts) {
        layout.addPart(part);
        ids.push_back(part->getId());
    }
    for (const auto& mechanism : station.mechanisms) {
        layout.addMechanism(mechanism);
        ids.push_back(mechanism->getId());
    }
    for (const auto& cloud : station.clouds) {
        layout.addPointCloud(cloud);
        ids.push_back(cloud->getId());
    }
    for (const auto& frame : station.frames) {
        layout.addFrame(frame);
        ids.push_back(frame->getId());
    }
    addTasks(station);
    for (const auto& task : station.tasks)
        ids.push_back(task->getId());
    if (Scene::Get())
        for (const unsigned id : ids)
            addToScene(id);
}

/// What of a program has a visual, in an order in which nothing takes along what comes later: tool data may hang on a work
/// object, and one work object on another, which is passed over then.
std::vector<unsigned> visualsOfProgram(const vrk::task::Task& task)
{
    std::vector<unsigned> ids;
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    for (const auto& path : task.getOwnPaths()) {
        for (const vrk::task::MoveInst* move : path->getMoveInstructions())
            ids.push_back(move->getId());
        ids.push_back(path->getId());
    }
    for (const auto& band : task.getMfgShapes())
        ids.push_back(band->getId());
    for (const sdf::ModelType kind : {sdf::ModelType::ToolData, sdf::ModelType::WObjData})
        for (const auto& item : task.getDataItems())
            if (item->asType(kind))
                ids.push_back(item->getId());
    return ids;
}

} // namespace

void showStation(const Station& station)
{
    Layout& layout = Layout::inst();
    if (station.whole)
        layout.replace(*station.whole);
    for (const auto& assembly : station.assemblies)
        layout.addAssembly(assembly);
    for (const auto& part : station.parts)
        layout.addPart(part);
    for (const auto& mechanism : station.mechanisms)
        layout.addMechanism(mechanism);
    for (const auto& cloud : station.clouds)
        layout.addPointCloud(cloud);
    for (const auto& frame : station.frames)
        layout.addFrame(frame);
    addPrograms(station);
    loadStation();
    for (const unsigned curve : station.arrowedCurves)
        for (const bool forward : {false, true})
            Scene::Get()->addCurveArrow(curve, forward);
    followJoints();
    Scene::Get()->addRenderTask([] { StationDimensions::Get().update(); }, 0); // behind the posts that show the things
}

void addToStation(const Station& station)
{
    runPosts(); // what fails of earlier posts is no failure of the station
    const StationContent before = Layout::inst();
    try {
        if (station.whole)
            replaceStation(*station.whole);
        addObjects(station);
        runPosts();
    } catch (...) {
        takeFromStation(station);
        if (station.whole)
            replaceStation(before);
        throw;
    }
}

void takeFromStation(const Station& station)
{
    std::vector<unsigned> ids;
    for (const auto& assembly : station.assemblies)
        ids.push_back(assembly->getId());
    for (const auto& part : station.parts)
        ids.push_back(part->getId());
    for (const auto& mechanism : station.mechanisms)
        ids.push_back(mechanism->getId());
    for (const auto& cloud : station.clouds)
        ids.push_back(cloud->getId());
    for (const auto& frame : station.frames)
        ids.push_back(frame->getId());
    for (const auto& task : station.tasks)
        ids.push_back(task->getId());
    if (Scene::Get())
        for (const unsigned id : ids)
            removeFromScene(id);
    runPosts();
    for (const unsigned id : ids)
        Layout::inst().remove(id);
}

void addToScene(unsigned id)
{
    Scene& scene = *Scene::Get();
    const std::shared_ptr<sdf::SdfObject> object = sdf::Share(id);
    if (auto* part = dynamic_cast<vrk::layout::Part*>(object.get())) {
        scene.addPart(part);
        addEdgesOfMeshes(id);
        addBands();
    } else if (auto* assembly = dynamic_cast<vrk::layout::Assembly*>(object.get())) {
        scene.addAssembly(assembly);
        addEdgesOfMeshes(id);
        addBands();
    } else if (const auto mechanism = std::dynamic_pointer_cast<Mechanism>(object)) {
        scene.addMechanism(mechanism.get(), true);
        showOwnColorsOfPlain(mechanism);
        addEdgesOfMeshes(id);
        if (const auto* manipulator = dynamic_cast<const Manipulator*>(mechanism.get()))
            scene.addFrame(manipulator->getControllerTaskFrame().get());
        addBands();
    } else if (auto* cloud = dynamic_cast<vrk::layout::PointCloud*>(object.get())) {
        scene.addPointCloud(cloud);
        if (Scene::HasVisual(cloud->getParentId()))
            scene.reparentVisual(id, cloud->getParentId()); // as after a load
    } else if (auto* frame = dynamic_cast<vrk::layout::Frame*>(object.get())) {
        scene.addFrame(frame);
    } else if (dynamic_cast<const vrk::task::Task*>(object.get())) {
        scene.addTask(id);
        addBands();
    }
}

void removeFromScene(unsigned id)
{
    std::vector<unsigned> ids{id};
    const std::shared_ptr<sdf::SdfObject> object = sdf::Share(id);
    if (const auto* manipulator = dynamic_cast<const Manipulator*>(object.get()))
        ids.push_back(manipulator->getControllerTaskFrame()->getId()); // which hangs on the world
    if (const auto* task = dynamic_cast<const vrk::task::Task*>(object.get()))
        std::ranges::copy(visualsOfProgram(*task), std::back_inserter(ids));
    // What hangs on something that goes as well is gone by then.
    Scene::Get()->addRenderTask(
        [ids] {
            for (const unsigned each : ids)
                if (Scene::HasVisual(each))
                    Scene::Get()->deleteVisual(Scene::GetVisual(each));
        },
        0);
}

} // namespace vrkview
