#include "station/LinkVisual.h"

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "scene/core/SceneCore.h"
#include "station/AssemblyVisual.h"
#include "station/ParentVisual.h"
#include "station/PartVisual.h"

#include <shared_mutex>

namespace vrk::visual {

bool LinkVisual::canApplyMaterial(const Visual& child)
{
    return IsMember(child);
}

LinkVisual* LinkVisual::Build(sdf::SdfNode* node, Visual* parent, bool withChildren)
{
    auto* visual = new LinkVisual(node, parent);
    SceneCore::Get()->visuals.enter(visual);
    if (!withChildren)
        return visual;
    std::vector<sdf::SdfObject*> children;
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        children = dynamic_cast<sdf::SdfContainer&>(*node).getChildren();
    }
    // Each hangs where its own parent id says, which is this link in a sound model.
    for (sdf::SdfObject* child : children) {
        auto* childNode = dynamic_cast<sdf::SdfNode*>(child);
        if (child->getModelType() == sdf::ModelType::Part)
            PartVisual::Build(resolveParent(*child), childNode);
        else if (child->getModelType() == sdf::ModelType::Assembly)
            AssemblyVisual::Build(resolveParent(*child), childNode);
    }
    return visual;
}

} // namespace vrk::visual
