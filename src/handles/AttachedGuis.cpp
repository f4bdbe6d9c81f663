#include "handles/AttachedGuis.h"

#include "handles/DragHandle.h"
#include "handles/PathEndsHandle.h"
#include "handles/VectorHandle.h"
#include "scene/core/SceneCore.h"
#include "visual/Picking.h"

#include <initializer_list>
#include <utility>

namespace vrk::visual {
namespace {

bool isBelow(const Visual* visual, const Visual* above)
{
    for (const Visual* parent = visual->getParent(); parent; parent = parent->getParent())
        if (parent == above)
            return true;
    return false;
}

/// It is not to be picked where it has been left.
void takeOff(GuiVisual* gui)
{
    gui->detach();
    picking::setCompoundObjectEnabled(gui, false);
}

} // namespace

AttachedGuis::AttachedGuis(SceneCore& core)
{
    core.visuals.whenDeleted([this](const Visual* dying) { noteDeath(dying); });
}

void AttachedGuis::attach(GuiVisual* gui, Visual* target, const rob::Posef& pose)
{
    gui->attachTo(target);
    gui->setPose(pose);
    current = gui;
}

void AttachedGuis::detach(GuiVisual* gui)
{
    gui->detach();
    current = nullptr; // whichever it was
}

void AttachedGuis::rescueCurrentFrom(const Visual* removed)
{
    if (current && isBelow(current, removed))
        takeOff(std::exchange(current, nullptr));
}

void AttachedGuis::noteDeath(const Visual* dying)
{
    for (GuiVisual* gui :
         std::initializer_list<GuiVisual*>{DragHandle::Get(), VectorHandle::Get(), PathEndsHandle::Get()})
        if (gui && isBelow(gui, dying)) {
            takeOff(gui);
            if (current == gui)
                current = nullptr;
        }
    if (current == dying)
        current = nullptr;
}

} // namespace vrk::visual
