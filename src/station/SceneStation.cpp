#include "scene/Scene.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/smart/SmartComponent.h"
#include "platform/task/Task.h"
#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"
#include "station/AssemblyVisual.h"
#include "station/ManipulatorVisual.h"
#include "station/ParentVisual.h"
#include "station/PartVisual.h"
#include "station/StationRecords.h"
#include "station/TcpTraceVisual.h"
#include "station/TcpVisual.h"
#include "station/ToolVisual.h"
#include "station/WObjVisual.h"
#include "view/Camera.h"
#include "visual/FrameVisual.h"
#include "visual/PointCloudVisual.h"
#include "visual/WatchedVisual.h"

#include <deque>
#include <shared_mutex>

namespace vrk::visual {
namespace {

struct TcpTrace : WatchedVisual<TcpTraceVisual> {
    using WatchedVisual::WatchedVisual;
};

/// What waits for the end of the next station load.
class LoadTasks {
public:
    void add(std::function<void()> task) { tasks.push_back(std::move(task)); }
    void run()
    {
        try {
            while (!tasks.empty()) { // which also runs what a load task adds
                tasks.front()();
                tasks.front() = nullptr;
                tasks.pop_front();
            }
        } catch (...) {
            tasks.clear(); // as with posted tasks: one that throws takes the rest along, and the next load starts anew
            throw;
        }
    }

private:
    std::deque<std::function<void()>> tasks;
};

constexpr double noViewPoint = 1e-5; // squared length: a saved view so near the origin, and unturned, is none

/// Calls `call` with each object of the list that stands by itself; the others are built by who owns them.
template <typename List, typename Call>
void forStandalone(const List& list, const Call& call)
{
    for (const auto& object : list)
        if (object->isStandalone())
            call(resolveParent(*object), object.get());
}

void restoreView(const rob::PoseTemplate<double>& pose)
{
    const bool none =
        pose.position.squaredLength() < noViewPoint && pose.rotation().isApprox(rob::RotationTemplate<double>());
    if (none)
        return;
    const rob::PoseTemplate<float> narrowed(pose);
    Camera::Get()->setWorldPosition(narrowed.position);
    Camera::Get()->setWorldRotation(narrowed.rotation());
}

void loadMechanisms()
{
    for (const auto& manipulator : layout::Layout::inst().manipulators) {
        ManipulatorVisual::Build(resolveParent(*manipulator), manipulator.get(), true);
        const layout::Frame& taskFrame = *manipulator->getControllerTaskFrame();
        FrameVisual::Build(Scene::GetWorldVisual(), taskFrame.getId(), rob::PoseTemplate<float>(taskFrame.getPose()));
    }
}

void loadStandalone()
{
    const layout::Layout& station = layout::Layout::inst();
    forStandalone(station.assemblies, [](Visual* parent, sdf::SdfNode* node) { AssemblyVisual::Build(parent, node); });
    forStandalone(station.parts, [](Visual* parent, sdf::SdfNode* node) { PartVisual::Build(parent, node); });
    forStandalone(station.pointclouds,
                  [](Visual* parent, sdf::SdfNode* node) { PointCloudVisual::Build(parent, node); });
    forStandalone(station.tools, [](Visual* parent, sdf::SdfNode* node) { ToolVisual::Build(parent, node, true); });
    forStandalone(station.devices, [](Visual* parent, sdf::SdfNode* node) { DeviceVisual::Build(parent, node, true); });
    for (const auto& frame : station.frames)
        FrameVisual::Build(resolveParent(*frame), frame.get());
}

} // namespace

void Scene::LoadStation()
{
    started();
    Scene* scene = Get();
    scene->addRenderTask([scene] { scene->doLoadStation(); }, 0);
    // Behind the load: an id without a visual would be passed over.
    std::vector<unsigned> hidden;
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        hidden = layout::Layout::inst().visibilities;
    }
    for (const unsigned id : hidden)
        scene->setVisualVisible(id, false);
}

void Scene::doLoadStation()
{
    // Whoever carries others comes first.
    loadMechanisms();
    loadStandalone();
    const layout::Layout& station = layout::Layout::inst();
    std::vector<smartcomp::SmartComponent*> components;
    std::vector<unsigned> tasks;
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        components = smartcomp::GetAllSmartComponents();
        for (const task::Task* task : task::GetAllTasks())
            tasks.push_back(task->getId());
        core->record<HiddenThings>().ids = hiddenThingsOf(station);
    }
    for (smartcomp::SmartComponent* component : components)
        if (component->isTopLevel())
            doBuildVisual(component);
    for (const unsigned id : tasks)
        buildTask(id);
    restoreView(station.lastViewPointPose);
    for (const layout::Attachment& attachment : station.attachments)
        doAddAttachment(attachment.child, attachment.parent, attachment.pose);
    core->record<LoadTasks>().run();
}

void Scene::addLoadTask(std::function<void()> task)
{
    core->record<LoadTasks>().add(std::move(task));
}

void Scene::addAssembly(sdf::SdfNode* assembly)
{
    refuseNull(assembly, "addAssembly", "an assembly");
    addRenderTask([assembly] { AssemblyVisual::Build(resolveParent(*assembly), assembly); }, 0);
}

void Scene::addPart(sdf::SdfNode* part)
{
    refuseNull(part, "addPart", "a part");
    addRenderTask([part] { PartVisual::Build(resolveParent(*part), part); }, 0);
}

void Scene::addBody(sdf::SdfNode* part, sdf::SdfNode* body)
{
    refuseNull(part, "addBody", "a part");
    addRenderTask(
        [part, body] {
            auto* known = dynamic_cast<layout::Body*>(body);
            if (known && HasVisual(part->getId()))
                PartVisual::BuildBody(GetVisual(part->getId()), *known);
        },
        0);
}

void Scene::addMechanism(sdf::SdfNode* mechanism, bool withChildren)
{
    refuseNull(mechanism, "addMechanism", "a mechanism");
    addRenderTask(
        [mechanism, withChildren] {
            Visual* parent = resolveParent(*mechanism);
            switch (mechanism->getModelType()) {
            case sdf::ModelType::Manipulator:
                ManipulatorVisual::Build(parent, mechanism, withChildren);
                break;
            case sdf::ModelType::Tool:
                ToolVisual::Build(parent, mechanism, withChildren);
                break;
            case sdf::ModelType::Device:
                DeviceVisual::Build(parent, mechanism, withChildren);
                break;
            default:
                break;
            }
        },
        0);
}

void Scene::addFrame(sdf::SdfNode* frame)
{
    refuseNull(frame, "addFrame", "a frame");
    addRenderTask(
        [frame] {
            const unsigned parent = frame->getParentId();
            FrameVisual::Build(isWorldId(parent) ? GetWorldVisual() : GetVisual(parent), frame);
        },
        0);
}

void Scene::addWObj(sdf::SdfNode* workObject)
{
    refuseNull(workObject, "addWObj", "a work object");
    addRenderTask([workObject] { WObjVisual::Build(resolveParent(*workObject), workObject); }, 0);
}

void Scene::addPointCloud(sdf::SdfNode* cloud)
{
    refuseNull(cloud, "addPointCloud", "a point cloud");
    // Not on its owner, where a load hangs it: a scan that comes in by itself lies where it was taken, in the world.
    addRenderTask([cloud] { PointCloudVisual::Build(GetWorldVisual(), cloud); }, 0);
}

void Scene::buildVisual(smartcomp::SmartComponent* component)
{
    refuseNull(component, "buildVisual", "a component");
    addRenderTask([this, component] { doBuildVisual(component); }, 0);
}

void Scene::doBuildVisual(smartcomp::SmartComponent* component)
{
    if (!component->hasVisual())
        return;
    smartcomp::BuildVisual(component, resolveParent(*component));
    core->record<BuiltComponents>().registered[component->getId()] = HasVisual(component->getId());
}

void Scene::addToolData(unsigned id)
{
    addRenderTask([this, id] { doAddToolData(id); }, 0);
}

void Scene::doAddToolData(unsigned id)
{
    if (const std::shared_ptr<sdf::SdfObject> toolData = sdf::Share(id))
        TcpVisual::Build(GetVisual(toolData->getParentId()), *toolData);
}

void Scene::updateToolData(unsigned id)
{
    addRenderTask(
        [this, id] {
            doRemoveVisual(id);
            doAddToolData(id);
        },
        0);
}

void Scene::updateWObj(unsigned id)
{
    addRenderTask([id] { GetVisual(id)->update(); }, 0);
}

void Scene::clearTcpTrace()
{
    addRenderTask(
        [this] {
            if (TcpTraceVisual* trace = core->record<TcpTrace>().get())
                deleteVisual(trace);
        },
        0);
}

void Scene::setTcpTrace(TcpTraceVisual* trace)
{
    core->record<TcpTrace>().set(trace);
}

} // namespace vrk::visual
