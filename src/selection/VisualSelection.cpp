#include "selection/VisualSelection.h"

#include "platform/broker/SignalBroker.h"
#include "platform/common/Checks.h"
#include "platform/common/ParallelFor.h"
#include "selection/CurveObject.h"
#include "selection/LineObject.h"
#include "selection/MeshObject.h"
#include "selection/PointCloudObject.h"
#include "selection/PointObject.h"
#include "selection/ShapeObject.h"
#include "selection/geometry/BVHBuilder.h"
#include "visual/CurveVisual.h"
#include "visual/LineVisual.h"
#include "visual/PointCloudVisual.h"
#include "visual/PointVisual.h"
#include "visual/SolidVisual.h"

#include <OgreSceneNode.h>

#include <algorithm>
#include <mutex>
#include <utility>

namespace vrk::selection {
namespace {

VisualSelection* instance = nullptr;

template <typename Call>
void forSubtree(visual::Visual* visual, const Call& call)
{
    call(visual);
    for (visual::Visual* child : visual->getChildren())
        forSubtree(child, call);
}

} // namespace

void Init()
{
    if (!instance)
        instance = new VisualSelection;
}

void Finish() {}

VisualSelection::VisualSelection() = default;
VisualSelection::~VisualSelection() = default;

VisualSelection* VisualSelection::Get()
{
    return instance;
}

void VisualSelection::MarkRenderThread() {}

void VisualSelection::checkThread() {}

void VisualSelection::enter(SelectableObject* object, bool detectable)
{
    const std::lock_guard alone(access);
    object->detectable = detectable;
    std::vector<BVHPrimitive*>& all = containers[containerOf(*object)].primitives;
    object->place = all.size();
    all.push_back(object);
    objects.emplace(object->visual, object);
    stale[containerOf(*object)] = true;
    dirty.exchange(true);
}

void VisualSelection::addShape(const TopoDS_Shape& shape, visual::SolidVisual* visual, bool detectable)
{
    if (!hasVisual(visual))
        enter(new ShapeObject(shape, visual), detectable);
}

void VisualSelection::addCurveVisual(const TopoDS_Shape& shape, visual::CurveVisual* visual, bool detectable)
{
    if (!hasVisual(visual))
        enter(new CurveObject(shape, visual), detectable);
}

void VisualSelection::addMeshVisual(visual::Visual* visual, bool detectable, bool priority)
{
    forSubtree(visual, [&](visual::Visual* v) {
        if ((v->getType() != VisualType::Mesh && v->getType() != VisualType::Paint) || hasVisual(v))
            return;
        auto* object = new MeshObject(v);
        object->priority = priority;
        enter(object, detectable);
    });
}

void VisualSelection::addPointVisual(visual::PointVisual* visual, bool detectable)
{
    if (!hasVisual(visual))
        enter(new PointObject(visual), detectable);
}

void VisualSelection::addPointCloudVisual(visual::PointCloudVisual* visual, bool detectable)
{
    if (!hasVisual(visual))
        enter(new PointCloudObject(visual), detectable);
}

void VisualSelection::addLineVisual(visual::LineVisual* visual)
{
    if (!hasVisual(visual))
        enter(new LineObject(visual), true);
}

void VisualSelection::removeObject(visual::Visual* visual)
{
    const auto found = objects.find(visual);
    if (found == objects.end())
        return;
    const std::lock_guard alone(access);
    SelectableObject* object = found->second;
    dirty.exchange(true);
    objects.erase(found);
    stale[containerOf(*object)] = true;
    containers[containerOf(*object)].primitives[object->place] =
        nullptr; // closed up with all other gaps before anything is asked
    delete object;
}

unsigned VisualSelection::containerOf(const SelectableObject& object)
{
    return object.kind == SelectableObject::ObjectKind::PointCloud ? clouds : 0;
}

void VisualSelection::closeGaps()
{
    for (PrimitiveContainer& container : containers) {
        std::erase(container.primitives, nullptr);
        for (std::size_t i = 0; i < container.primitives.size(); ++i)
            static_cast<SelectableObject*>(container.primitives[i])->place = i;
    }
}

void VisualSelection::removeCompoundObject(visual::Visual* visual)
{
    forSubtree(visual, [&](visual::Visual* v) { removeObject(v); });
}

void VisualSelection::updateShapeFaces(visual::SolidVisual* visual)
{
    const SelectableObject* object = find(visual);
    if (!object)
        return;
    const bool detectable = object->detectable;
    // The solid alone: what hangs on it has not changed, and nobody would enter it again.
    removeObject(visual);
    addShape(visual->getShape(), visual, detectable);
}

void VisualSelection::setHiddenPoints(visual::PointCloudVisual* visual)
{
    SelectableObject* object = find(visual);
    if (!object)
        return;
    const std::lock_guard alone(access);
    dirty.exchange(true);
    static_cast<PointCloudObject*>(object)->hidden = visual->getHiddenPoints();
}

void VisualSelection::setObjectEnabled(visual::Visual* visual, bool enabled)
{
    SelectableObject* object = find(visual);
    if (!object)
        return;
    const std::lock_guard alone(access);
    dirty.exchange(true);
    if (object->enabled != enabled)
        stale[containerOf(*object)] = true;
    object->enabled = enabled;
}

void VisualSelection::setCompoundObjectEnabled(visual::Visual* visual, bool enabled)
{
    dirty.exchange(true);
    forSubtree(visual, [&](visual::Visual* v) { setObjectEnabled(v, enabled); });
}

void VisualSelection::setDetectable(visual::Visual* visual, bool detectable)
{
    if (SelectableObject* object = find(visual))
        object->detectable = detectable;
}

void VisualSelection::setLineEnabled(bool enabled)
{
    const std::lock_guard alone(access);
    bool isChanged = false;
    for (const auto& [visual, object] : objects) {
        if (object->kind != SelectableObject::ObjectKind::Line)
            continue;
        isChanged = isChanged || object->enabled != enabled;
        object->enabled = enabled;
        if (enabled)
            updateObject(*object);
    }
    if (!isChanged)
        return;
    stale[0] = true;
    dirty.exchange(true);
}

void VisualSelection::markDirty(visual::Visual* visual)
{
    forSubtree(visual, [&](visual::Visual* v) {
        // OGRE tells the children of a node with the next frame only, and their poses in the world are asked for before.
        v->getSceneNode()->needUpdate();
        SelectableObject* object = find(v);
        if (!object)
            return;
        object->worldDirty = true;
        dirty.exchange(true);
    });
}

SelectableObject* VisualSelection::find(visual::Visual* visual) const
{
    const auto found = objects.find(visual);
    return found == objects.end() ? nullptr : found->second;
}

SelectableObject* VisualSelection::getObject(visual::Visual* visual) const
{
    return common::checkedAt(objects, visual);
}

std::vector<visual::Visual*> VisualSelection::registeredVisuals() const
{
    std::vector<visual::Visual*> found;
    found.reserve(objects.size());
    for (const auto& [visual, object] : objects)
        found.push_back(visual);
    return found;
}

bool VisualSelection::isEnabled(visual::Visual* visual) const
{
    return getObject(visual)->enabled;
}

bool VisualSelection::isDetectable(visual::Visual* visual) const
{
    return getObject(visual)->detectable;
}

/// The parts of what was added since the last time, for objects whose parts no other thread minds being made.
void VisualSelection::buildPartsOnAllCores()
{
    std::vector<SelectableObject*> waiting;
    for (BVHPrimitive* primitive : containers[0].primitives) {
        auto* object = static_cast<SelectableObject*>(primitive);
        if (object->preparePartsForAnyThread())
            waiting.push_back(object);
    }
    if (waiting.size() < 2) // made by its own update
        return;
    parallelFor(waiting.size(), [&waiting](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i)
            waiting[i]->buildParts();
    });
}

void VisualSelection::updateWorldBoxes()
{
    const std::lock_guard alone(access);
    updateObjects();
}

void VisualSelection::updateObjects()
{
    closeGaps();
    buildPartsOnAllCores();
    for (PrimitiveContainer& container : containers)
        for (BVHPrimitive* object : container.primitives)
            updateObject(*static_cast<SelectableObject*>(object));
}

void VisualSelection::updateObject(SelectableObject& object)
{
    if (!object.worldDirty)
        return;
    bool& isTreeStale = stale[containerOf(object)];
    const bool wasStale = std::exchange(isTreeStale, true); // and so it stays if the update fails
    const visual::Box before = object.box;
    object.update();
    object.box.getCenter(); // settled: where nothing is built, nobody else does it before several threads read it
    const bool isMoved = object.box.min != before.min || object.box.max != before.max;
    isTreeStale = wasStale || (object.enabled && isMoved);
}

void VisualSelection::update()
{
    if (!dirty)
        return;
    {
        const std::lock_guard alone(access);
        updateObjects();
        if (stale[0])
            anyOnTop = std::ranges::any_of(containers[0].primitives, [](const BVHPrimitive* object) {
                return object->enabled && static_cast<const SelectableObject*>(object)->priority;
            });
        for (std::size_t i = 0; i < containers.size(); ++i)
            if (stale[i]) {
                containers[i].bvh = BVHBuilder(&containers[i]).build();
                stale[i] = false;
            }
        dirty.exchange(false);
    }
    broker::SignalBroker::snapResultInvalidated();
}

} // namespace vrk::selection
