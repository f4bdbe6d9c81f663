#include "station/CompoundVisual.h"

#include "scene/core/SceneCore.h"
#include "visual/FrameVisual.h"

namespace vrk::visual {

CompoundVisual::CompoundVisual(sdf::SdfNode* node, Visual* parent, VisualType kind) : Visual(node, parent)
{
    type = kind;
}

bool CompoundVisual::IsMember(const Visual& child)
{
    return (child.getType() == VisualType::Assembly || child.getType() == VisualType::Part) && !child.isAttached();
}

void CompoundVisual::createOwnFrame(const char* label)
{
    ownFrame = FrameVisual::BuildHidden(this, label);
}

void CompoundVisual::hideOwnFrame()
{
    if (ownFrame)
        ownFrame->setVisible(false, true);
}

bool CompoundVisual::showsFrameWhenSelected() const
{
    // Of a selected assembly only its own frame shows, not those of its members.
    return isTopLevel() || !SceneCore::Get()->isSelected(getParent());
}

void CompoundVisual::setHighlighted()
{
    for (Visual* child : getChildren())
        if (takesAppearance(*child) && (highlightsSelectedChildren() || !SceneCore::Get()->isSelected(child)))
            child->setHighlighted();
}

void CompoundVisual::setSelected()
{
    for (Visual* child : getChildren())
        if (takesAppearance(*child))
            child->setSelected();
    if (ownFrame && showsFrameWhenSelected())
        ownFrame->setVisible(true, true);
}

void CompoundVisual::resetAppearance()
{
    for (Visual* child : getChildren())
        if (takesAppearance(*child))
            child->resetAppearance();
    hideOwnFrame();
}

void CompoundVisual::clearHighlightOrSelect()
{
    for (Visual* child : getChildren())
        if (takesAppearance(*child))
            child->clearHighlightOrSelect();
    hideOwnFrame();
}

} // namespace vrk::visual
