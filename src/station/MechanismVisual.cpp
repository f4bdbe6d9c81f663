#include "station/MechanismVisual.h"

#include "platform/layout/Mechanism.h"
#include "scene/core/SceneCore.h"
#include "station/LinkVisual.h"

namespace vrk::visual {
namespace {

/// Removes the visuals of an object and of its pieces, wherever they hang: a piece that names another parent than its owner
/// is not below the owner's visual.
void removeVisualsOf(const sdf::SdfObject& object)
{
    const VisualRegistry& visuals = SceneCore::Get()->visuals;
    for (const std::shared_ptr<sdf::SdfObject>& piece : object.getPieces())
        removeVisualsOf(*piece);
    if (visuals.has(object.getId()))
        Visual::Delete(visuals.get(object.getId()));
}

} // namespace

MechanismVisual::MechanismVisual(sdf::SdfNode* node, Visual* parent, bool withChildren, VisualType kind)
    : CompoundVisual(node, parent, kind)
{
    const auto& mechanism = dynamic_cast<layout::Mechanism&>(*node);
    try {
        for (const std::shared_ptr<layout::Link>& link : mechanism.getLinks())
            LinkVisual::Build(link.get(), this, withChildren);
        for (const std::shared_ptr<sdf::SdfNode>& child : mechanism.getPlainChildren())
            SceneCore::Get()->visuals.enter(new Visual(child.get(), this));
        createOwnFrame("Base Frame");
    } catch (...) {
        clearChildren(); // while they have a parent
        throw;
    }
}

void MechanismVisual::BuildWhole(const sdf::SdfObject& mechanism, const std::function<void()>& build)
{
    try {
        build();
    } catch (...) {
        removeVisualsOf(mechanism);
        throw;
    }
}

} // namespace vrk::visual
