#include "selection/VisualSelection.h"

#include "platform/broker/SignalBroker.h"
#include "platform/common/Checks.h"
#include "visual/CurveVisual.h"
#include "visual/LineVisual.h"
#include "visual/PointCloudVisual.h"
#include "visual/PointVisual.h"
#include "visual/SolidVisual.h"

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

VisualSelection* VisualSelection::Get()
{
    return instance;
}

void VisualSelection::enter(visual::Visual* visual, bool detectable, bool priority)
{
    if (objects.try_emplace(visual, Registered{.detectable = detectable, .priority = priority}).second)
        dirty.exchange(true);
}

void VisualSelection::addShape(const TopoDS_Shape&, visual::SolidVisual* visual, bool detectable)
{
    enter(visual, detectable, false);
}

void VisualSelection::addCurveVisual(const TopoDS_Shape&, visual::CurveVisual* visual, bool detectable)
{
    enter(visual, detectable, false);
}

void VisualSelection::addMeshVisual(visual::Visual* visual, bool detectable, bool priority)
{
    forSubtree(visual, [&](visual::Visual* v) {
        if (v->getType() == VisualType::Mesh || v->getType() == VisualType::Paint)
            enter(v, detectable, priority);
    });
}

void VisualSelection::addPointVisual(visual::PointVisual* visual, bool detectable)
{
    enter(visual, detectable, false);
}

void VisualSelection::addPointCloudVisual(visual::PointCloudVisual* visual, bool detectable)
{
    enter(visual, detectable, false);
}

void VisualSelection::addLineVisual(visual::LineVisual* visual)
{
    enter(visual, true, false);
}

void VisualSelection::removeObject(visual::Visual* visual)
{
    dirty.exchange(true);
    objects.erase(visual);
}

void VisualSelection::removeCompoundObject(visual::Visual* visual)
{
    forSubtree(visual, [&](visual::Visual* v) {
        if (hasVisual(v))
            removeObject(v);
    });
}

void VisualSelection::updateShapeFaces(visual::SolidVisual* visual)
{
    const bool detectable = isDetectable(visual);
    removeCompoundObject(visual);
    addShape(visual->getShape(), visual, detectable);
}

void VisualSelection::setObjectEnabled(visual::Visual* visual, bool enabled)
{
    const auto found = objects.find(visual);
    if (found == objects.end())
        return;
    dirty.exchange(true);
    found->second.enabled = enabled;
}

void VisualSelection::setCompoundObjectEnabled(visual::Visual* visual, bool enabled)
{
    dirty.exchange(true);
    forSubtree(visual, [&](visual::Visual* v) { setObjectEnabled(v, enabled); });
}

void VisualSelection::setDetectable(visual::Visual* visual, bool detectable)
{
    const auto found = objects.find(visual);
    if (found != objects.end())
        found->second.detectable = detectable;
}

void VisualSelection::markDirty(visual::Visual* visual)
{
    forSubtree(visual, [&](visual::Visual* v) {
        const auto found = objects.find(v);
        if (found == objects.end())
            return;
        found->second.worldDirty = true;
        dirty.exchange(true);
    });
}

const VisualSelection::Registered& VisualSelection::registered(visual::Visual* visual) const
{
    return common::checkedAt(objects, visual);
}

std::vector<visual::Visual*> VisualSelection::registeredVisuals() const
{
    std::vector<visual::Visual*> found;
    found.reserve(objects.size());
    for (const auto& [visual, entry] : objects)
        found.push_back(visual);
    return found;
}

bool VisualSelection::isEnabled(visual::Visual* visual) const
{
    return registered(visual).enabled;
}

bool VisualSelection::isDetectable(visual::Visual* visual) const
{
    return registered(visual).detectable;
}

void VisualSelection::update()
{
    if (!dirty)
        return;
    for (auto& [visual, entry] : objects)
        entry.worldDirty = false;
    dirty.exchange(false);
    broker::SignalBroker::snapResultInvalidated();
}

} // namespace vrk::selection
