#include "station/AssemblyVisual.h"

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "scene/core/SceneCore.h"
#include "station/ParentVisual.h"
#include "station/PartVisual.h"

#include <shared_mutex>
#include <vector>

namespace vrk::visual {

AssemblyVisual::AssemblyVisual(sdf::SdfNode* node, Visual* parent) : CompoundVisual(node, parent, VisualType::Assembly)
{
    createOwnFrame("Local Frame");
}

void AssemblyVisual::Build(Visual* parent, sdf::SdfNode* node)
{
    const auto& assembly = dynamic_cast<sdf::SdfContainer&>(*node);
    BuildBare(parent, node);
    std::vector<sdf::SdfNode*> members;
    {
        sdf::SdfManager& model = sdf::SdfManager::inst();
        const std::shared_lock lock(model.mutex());
        for (const unsigned id : assembly.getObjChildren())
            if (auto* member = dynamic_cast<sdf::SdfNode*>(model.find(id)))
                members.push_back(member);
    }
    // Each member hangs where its own parent id says, which is this assembly in a sound model.
    for (sdf::SdfNode* member : members)
        if (member->getModelType() == sdf::ModelType::Assembly)
            Build(resolveParent(*member), member);
        else
            PartVisual::Build(resolveParent(*member), member);
}

AssemblyVisual* AssemblyVisual::BuildBare(Visual* parent, sdf::SdfNode* node)
{
    auto* visual = new AssemblyVisual(node, parent);
    SceneCore::Get()->visuals.enter(visual);
    return visual;
}

} // namespace vrk::visual
