// Brings the view to the state of the model. What is to be compared is read under the model's lock first; the work, which
// takes that lock by itself, comes after.

#include "scene/Scene.h"

#include "platform/common/Logger.h"
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
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "station/AssemblyVisual.h"
#include "station/ManipulatorVisual.h"
#include "station/ParentVisual.h"
#include "station/PartVisual.h"
#include "station/SamePlace.h"
#include "station/StationRecords.h"
#include "station/ToolVisual.h"
#include "visual/FacetVisual.h"
#include "visual/FrameVisual.h"
#include "visual/Picking.h"
#include "visual/PointCloudVisual.h"
#include "visual/SelectedIds.h"

#include <Standard_Failure.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <ranges>
#include <shared_mutex>
#include <stdexcept>
#include <unordered_set>

namespace vrk::visual {
namespace {

using Object = std::shared_ptr<sdf::SdfObject>;

/// An object of the station as the model has it.
struct Thing {
    Object object;
    unsigned id = 0;
    unsigned carrier = 0; ///< the id of what it hangs on
    rob::PoseTemplate<float> pose;
    bool isAttached = false;
    bool isOwn = false;           ///< no piece of another; what only lies on another is its own thing, too
    bool isPlacedByOwner = false; ///< hangs where its owner has put it, as a link does
    BodySource source{};          ///< of a body
};

bool isMadeWithOwner(const sdf::SdfObject& object)
{
    return object.asType(sdf::ModelType::Body) || dynamic_cast<const layout::Link*>(&object) ||
           dynamic_cast<const layout::Frame*>(&object) || dynamic_cast<const layout::Wrist*>(&object);
}

VisualType kindOf(const sdf::SdfObject& object)
{
    switch (object.getModelType()) {
    case sdf::ModelType::Manipulator:
        return VisualType::Manipulator;
    case sdf::ModelType::Tool:
        return VisualType::Tool;
    case sdf::ModelType::Device:
        return VisualType::Device;
    case sdf::ModelType::Assembly:
        return VisualType::Assembly;
    case sdf::ModelType::Part:
        return VisualType::Part;
    case sdf::ModelType::PointCloud:
        return VisualType::PointCloud;
    default:
        return dynamic_cast<const layout::Frame*>(&object) ? VisualType::Frame : VisualType::None;
    }
}

std::string nameOf(const sdf::SdfObject& object)
{
    return fmt::format("'{}' ({})", object.getName(), object.getId());
}

Visual* visualOfId(unsigned id)
{
    return Scene::HasVisual(id) ? Scene::GetVisual(id) : nullptr;
}

/// What is seen and picked of a body: a display mode hides its faces or its edges, and picking is told of neither.
struct Seen {
    bool faces = true;
    bool edges = true;
    bool isPicked = true;
};

Seen seenOf(Visual& body)
{
    const auto* service = selection::VisualSelection::Get();
    Seen seen{body.isVisible(), true, !service->hasVisual(&body) || service->isEnabled(&body)};
    for (const Visual* child : body.getChildren())
        if (child->getType() == VisualType::WireFrame)
            seen.edges = child->isVisible();
    return seen;
}

void showAs(Visual& body, const Seen& seen)
{
    if (!seen.faces)
        body.setVisible(false, false);
    for (Visual* child : body.getChildren())
        if (child->getType() == VisualType::WireFrame && !seen.edges)
            child->setVisible(false, false);
    if (!seen.isPicked)
        picking::setObjectEnabled(&body, false);
}

/// What was noted as failed, in order.
class Failures {
public:
    void attempt(const std::string& what, const std::function<void()>& work)
    {
        try {
            work();
        } catch (const Standard_Failure& failure) {
            note(what, failure.GetMessageString());
        } catch (const std::exception& failure) {
            note(what, failure.what());
        }
    }
    void raise() const
    {
        if (count > 0)
            throw std::runtime_error(fmt::format("SyncStation: {} could not be shown, the first is {}", count, first));
    }

private:
    void note(const std::string& what, const char* cause)
    {
        const std::string text = fmt::format("{}: {}", what, cause);
        AppLogger::inst()->error("SyncStation: " + text);
        if (count++ == 0)
            first = text;
    }

    std::size_t count = 0;
    std::string first;
};

} // namespace

/// One run over the station. Render thread.
class StationSync {
public:
    explicit StationSync(Scene& scene) : scene(scene), core(*scene.core) {}

    void run()
    {
        read();
        removeUnknown();
        for (const Thing& thing : things)
            if (thing.isOwn)
                show(*thing.object);
        showComponents();
        for (const auto& task : content.tasks)
            Scene::doSyncTask(*task, {[this](const auto& what, const auto& work) { failures.attempt(what, work); },
                                      [this](unsigned id) { remove(id); }});
        place();
        hide();
        if (hasTakenAway && !selected.empty())
            selectAgain();
        failures.raise();
    }

private:
    void read();
    void readThing(const Object& object, bool isPiece);
    void removeUnknown();
    void remove(unsigned id);
    void leaveOnWorld(const Visual& dying);
    void show(sdf::SdfObject& object);
    void build(sdf::SdfObject& object, Visual* parent);
    void showMembers(const sdf::SdfObject& object);
    void showBodies(const layout::Part& part);
    void exchange(layout::Body& body);
    void takeColors(Visual& visual, layout::Body& body, const BodySource& source);
    bool isComplete(const layout::Mechanism& mechanism) const;
    void showComponents();
    void place();
    void hide();
    void selectAgain();

    Scene& scene;
    SceneCore& core;
    layout::StationContent content;
    std::unordered_set<unsigned> hidden; // in the model
    std::vector<Thing> things;           // owners before their pieces, in the order of a load
    std::unordered_map<unsigned, std::size_t> byId;
    std::unordered_set<unsigned> known; // every id of the model
    std::vector<unsigned> selected;     // before anything was taken away
    Failures failures;
    bool hasTakenAway = false;
};

void Scene::SyncStation()
{
    started();
    Scene* scene = Get();
    scene->addRenderTask([scene] { StationSync(*scene).run(); }, 0);
}

void StationSync::read()
{
    selected = core.record<SelectedIds>().copy();
    sdf::SdfManager& model = sdf::SdfManager::inst();
    const std::shared_lock lock(model.mutex());
    content = layout::Layout::inst();
    hidden = hiddenThingsOf(content);
    const auto readAll = [this](const auto& list) {
        for (const auto& object : list)
            if (object->isStandalone())
                readThing(object, false);
    };
    readAll(content.manipulators);
    readAll(content.assemblies);
    readAll(content.parts);
    readAll(content.pointclouds);
    readAll(content.tools);
    readAll(content.devices);
    readAll(content.frames);
    for (const layout::Attachment& attachment : content.attachments)
        if (const auto found = byId.find(attachment.child); found != byId.end()) {
            Thing& carried = things[found->second];
            carried.carrier = attachment.parent;
            carried.pose = rob::PoseTemplate<float>(attachment.pose);
            carried.isAttached = true;
        }
    for (const unsigned id : core.visuals.all() | std::views::keys)
        if (byId.contains(id) || model.find(id))
            known.insert(id);
}

void StationSync::readThing(const Object& object, bool isPiece)
{
    Thing thing{object, object->getId(), object->getParentId(), rob::PoseTemplate<float>(object->getPose())};
    thing.isOwn = !isPiece;
    thing.isPlacedByOwner = isPiece && isMadeWithOwner(*object);
    if (const auto* body = dynamic_cast<const layout::Body*>(object.get()))
        thing.source = PartVisual::SourceOf(*body);
    byId[thing.id] = things.size();
    things.push_back(std::move(thing));
    for (const Object& piece : object->getPieces())
        readThing(piece, true);
}

/// Ids from 0x80000000 up are those of what lives only in this process, and 0 is nobody's.
void StationSync::removeUnknown()
{
    std::vector<unsigned> gone;
    for (const auto& [id, visual] : core.visuals.all())
        if (id != 0 && id < sdf::SdfManager::stationId && visual != core.worldVisual && !known.contains(id))
            gone.push_back(id);
    std::ranges::sort(gone); // not by chance
    for (const unsigned id : gone)
        remove(id);
}

void StationSync::remove(unsigned id)
{
    Visual* visual = visualOfId(id);
    if (!visual)
        return; // or gone along with what it hung on
    hasTakenAway = true;
    leaveOnWorld(*visual);
    scene.doRemoveVisual(id);
}

/// What hangs below a visual that goes, and stands by itself, waits on the world until it is placed.
void StationSync::leaveOnWorld(const Visual& dying)
{
    std::vector<Visual*> left;
    for (Visual* child : dying.getChildren()) {
        const auto found = byId.find(child->getId());
        if (found != byId.end() && things[found->second].isOwn)
            left.push_back(child);
        else
            leaveOnWorld(*child);
    }
    for (Visual* child : left)
        core.worldVisual->attachVisual(child);
}

void StationSync::show(sdf::SdfObject& object)
{
    const auto* cloud = dynamic_cast<const layout::PointCloud*>(&object);
    const auto* mechanism = dynamic_cast<const layout::Mechanism*>(&object);
    failures.attempt(nameOf(object), [&] {
        Visual* visual = visualOfId(object.getId());
        auto* drawn = dynamic_cast<PointCloudVisual*>(visual);
        const bool isShown = visual && visual->getType() == kindOf(object) &&
                             (!cloud || (drawn && &drawn->getPoints() == &cloud->getPoints())) &&
                             (!mechanism || isComplete(*mechanism));
        if (isShown) {
            if (drawn && drawn->getHiddenPoints() != cloud->getHiddenPoints())
                drawn->hidePoints(cloud->getHiddenPoints());
            return;
        }
        if (mechanism)
            for (const Object& piece : mechanism->getPieces())
                remove(piece->getId()); // some hang elsewhere
        remove(object.getId());
        build(object, resolveParent(object));
    });
    showMembers(object);
}

/// By itself: members and bodies come one by one, so that one that fails takes no other along.
void StationSync::build(sdf::SdfObject& object, Visual* parent)
{
    auto* node = &dynamic_cast<sdf::SdfNode&>(object);
    switch (kindOf(object)) {
    case VisualType::Manipulator: {
        ManipulatorVisual::Build(parent, node, false);
        const layout::Frame& frame = *dynamic_cast<const layout::Manipulator&>(object).getControllerTaskFrame();
        FrameVisual::Build(core.worldVisual, frame.getId(), rob::PoseTemplate<float>(frame.getPose()));
        break;
    }
    case VisualType::Tool:
        ToolVisual::Build(parent, node, false);
        break;
    case VisualType::Device:
        DeviceVisual::Build(parent, node, false);
        break;
    case VisualType::Assembly:
        AssemblyVisual::BuildBare(parent, node);
        break;
    case VisualType::Part:
        PartVisual::BuildBare(parent, node);
        break;
    case VisualType::PointCloud:
        PointCloudVisual::Build(parent, node);
        break;
    default:
        FrameVisual::Build(parent, node);
        break;
    }
}

void StationSync::showMembers(const sdf::SdfObject& object)
{
    if (const auto* part = dynamic_cast<const layout::Part*>(&object)) {
        showBodies(*part);
        return;
    }
    for (const Object& piece : object.getPieces())
        if (piece->asType(sdf::ModelType::Part) || piece->asType(sdf::ModelType::Assembly))
            show(*piece);
        else if (dynamic_cast<const layout::Link*>(piece.get()))
            showMembers(*piece);
}

void StationSync::showBodies(const layout::Part& part)
{
    Visual* owner = visualOfId(part.getId());
    if (!owner)
        return; // told already
    for (const std::shared_ptr<layout::Body>& body : part.getBodies()) {
        const std::string what = fmt::format("body {} of {}", nameOf(*body), nameOf(part));
        failures.attempt(what, [&] {
            Visual* visual = visualOfId(body->getId());
            if (!visual) {
                PartVisual::BuildBody(owner, *body);
                return;
            }
            const auto found = byId.find(body->getId());
            const auto* drawn = dynamic_cast<const BodyVisual*>(visual);
            if (found == byId.end())
                return; // it came while this ran: the next sync has it
            const BodySource& source = things[found->second].source;
            if (!drawn || drawn->getSource().geometry != source.geometry)
                exchange(*body);
            else if (drawn->getSource().colors != source.colors)
                takeColors(*visual, *body, source);
        });
    }
}

/// The body made anew, in the place of the old visual, and seen and picked as that was.
void StationSync::exchange(layout::Body& body)
{
    Visual* old = visualOfId(body.getId());
    Visual* owner = visualOfId(body.getParentId());
    const Seen seen = seenOf(*old);
    const std::function<void()> drawBands = scene.keepBands(*old);
    remove(body.getId());
    PartVisual::BuildBody(owner, body);
    if (Visual* made = visualOfId(body.getId()))
        showAs(*made, seen);
    drawBands();
}

void StationSync::takeColors(Visual& visual, layout::Body& body, const BodySource& source)
{
    auto* facets = dynamic_cast<FacetVisual*>(&visual);
    if (!facets) {
        exchange(body);
        return;
    }
    facets->resetColor(); // of a mesh that several bodies share the colours of all
    facets->setSource(source);
}

/// Whether each piece that is built along with a mechanism is there.
bool StationSync::isComplete(const layout::Mechanism& mechanism) const
{
    return std::ranges::all_of(mechanism.getPieces(),
                               [this](const Object& piece) { return core.visuals.has(piece->getId()); });
}

void StationSync::showComponents()
{
    std::vector<smartcomp::SmartComponent*> components;
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        components = smartcomp::GetAllSmartComponents();
    }
    auto& built = core.record<BuiltComponents>().registered;
    std::erase_if(built, [](const auto& entry) { return !sdf::Share(entry.first); });
    for (smartcomp::SmartComponent* component : components) {
        const auto before = built.find(component->getId());
        const bool isBuilt = before != built.end() && (!before->second || visualOfId(component->getId()));
        if (component->isTopLevel() && !isBuilt)
            failures.attempt(nameOf(*component), [&] { scene.doBuildVisual(component); });
    }
}

void StationSync::place()
{
    struct Wrong {
        Visual* visual;
        Visual* carrier;
    };
    std::vector<Wrong> wrong;
    for (const Thing& thing : things) {
        Visual* visual = visualOfId(thing.id);
        if (!visual || thing.isPlacedByOwner)
            continue;
        Visual* carrier = resolveParent(thing.carrier);
        if (visual->getParent() != carrier)
            wrong.push_back({visual, carrier});
        if (visual->isAttached() != thing.isAttached)
            visual->setAttachState(thing.isAttached);
    }
    // Off first: two that change places would be refused while one still hangs on the other.
    for (const Wrong& each : wrong)
        core.worldVisual->attachVisual(each.visual);
    for (const Wrong& each : wrong)
        each.carrier->attachVisual(each.visual);
    for (const Thing& thing : things) {
        Visual* visual = visualOfId(thing.id);
        if (visual && !thing.object->asType(sdf::ModelType::Body) && !isSamePlace(visual->getPose(), thing.pose))
            visual->setPose(thing.pose);
    }
}

/// What is hidden in the model is hidden, and what was, and is no longer, is shown. Else the application's own showing and
/// hiding stays.
void StationSync::hide()
{
    auto& before = core.record<HiddenThings>().ids;
    for (const unsigned id : before)
        if (!hidden.contains(id) && known.contains(id))
            scene.doSetVisualVisible(id, true);
    for (const unsigned id : hidden)
        scene.doSetVisualVisible(id, false);
    before = hidden;
}

/// What is selected, or lies in what is, has lost its look along with its visual.
void StationSync::selectAgain()
{
    scene.doClearSelectedVisuals();
    for (const unsigned id : selected)
        if (core.visuals.has(id))
            scene.doSelectVisual(id);
}

} // namespace vrk::visual
