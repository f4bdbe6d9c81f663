#include "station/MechanismVisual.h"

#include "platform/layout/Mechanism.h"
#include "scene/core/SceneCore.h"
#include "station/LinkVisual.h"

namespace vrk::visual {

MechanismVisual::MechanismVisual(sdf::SdfNode* node, Visual* parent, bool withChildren, VisualType kind)
    : CompoundVisual(node, parent, kind)
{
    const auto& mechanism = dynamic_cast<layout::Mechanism&>(*node);
    for (const std::shared_ptr<layout::Link>& link : mechanism.getLinks())
        LinkVisual::Build(link.get(), this, withChildren);
    for (const std::shared_ptr<sdf::SdfNode>& child : mechanism.getPlainChildren())
        SceneCore::Get()->visuals.enter(new Visual(child.get(), this));
    createOwnFrame("Base Frame");
}

} // namespace vrk::visual
