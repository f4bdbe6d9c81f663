#include "handles/AttachedGuis.h"

#include "scene/core/SceneCore.h"
#include "visual/Picking.h"

#include <algorithm>

namespace vrk::visual {
namespace {

bool isBelow(const Visual& visual, const Visual* above)
{
    for (const Visual* parent = visual.getParent(); parent; parent = parent->getParent())
        if (parent == above)
            return true;
    return false;
}

} // namespace

AttachedGuis::AttachedGuis(SceneCore& core)
{
    core.visuals.whenDeleted([this](const Visual* dying) { rescueFrom(dying); });
}

void AttachedGuis::attach(GuiVisual* gui, Visual* target, const rob::Posef& pose)
{
    gui->attachTo(target);
    gui->setPose(pose);
    current = gui;
    if (std::ranges::find(attached, gui) == attached.end())
        attached.push_back(gui);
}

void AttachedGuis::detach(GuiVisual* gui)
{
    gui->detach();
    std::erase(attached, gui);
    current = nullptr; // whichever it was
}

void AttachedGuis::forget(GuiVisual* gui)
{
    std::erase(attached, gui);
    if (current == gui)
        current = nullptr;
}

/// A handle does not die with what it hangs on, and cannot be picked where it has been left.
void AttachedGuis::rescueFrom(const Visual* dying)
{
    if (attached.empty())
        return; // nearly always: every visual that dies comes here
    for (GuiVisual* gui : std::vector(attached)) {
        if (gui == dying) {
            forget(gui);
        } else if (isBelow(*gui, dying)) {
            gui->detach();
            picking::setCompoundObjectEnabled(gui, false);
            forget(gui);
        }
    }
}

} // namespace vrk::visual
