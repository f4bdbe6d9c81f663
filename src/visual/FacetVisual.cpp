#include "visual/FacetVisual.h"

#include "visual/Entities.h"
#include "visual/RenderGroups.h"
#include "visual/VisualCast.h"
#include "visual/WireFrameVisual.h"

#include <Ogre.h>

namespace vrk::visual {
void FacetVisual::setSelected()
{
    Visual::setSelected();
    setRenderQueueGroup(renderGroup::selected);
}

void FacetVisual::clearHighlightOrSelect()
{
    Visual::clearHighlightOrSelect();
    setRenderQueueGroup(renderGroup::normal);
}

void FacetVisual::suitEdges(const rob::ColorTemplate<float>& color)
{
    for (Visual* child : getChildren())
        if (auto* edges = visualCast<WireFrameVisual>(child, VisualType::WireFrame))
            edges->suitColor(color);
}

void FacetVisual::setRenderQueueGroup(unsigned char group)
{
    const auto put = [group](const Visual& visual) {
        for (Ogre::MovableObject* object : visual.getSceneNode()->getAttachedObjects())
            object->setRenderQueueGroup(group);
    };
    put(*this);
    // Paint is seen through, and so it is drawn last in its group: in an earlier one the body would be drawn over it.
    for (const Visual* child : getChildren())
        if (child->getType() == VisualType::Paint)
            put(*child);
}

Ogre::Entity* FacetVisual::makeEntity(const std::string& entityName, const std::string& meshName)
{
    return visual::attachEntity(*this, entityName, meshName);
}

std::uint64_t FacetVisual::TrianglesOf(const Ogre::Entity* entity)
{
    std::uint64_t sum = 0;
    if (entity)
        for (const Ogre::SubMesh* part : entity->getMesh()->getSubMeshes())
            sum += part->indexData->indexCount / 3;
    return sum;
}

std::uint64_t FacetVisual::VerticesOf(const Ogre::Entity* entity)
{
    std::uint64_t sum = 0;
    if (entity)
        for (const Ogre::SubMesh* part : entity->getMesh()->getSubMeshes())
            sum += part->vertexData->vertexCount;
    return sum;
}

} // namespace vrk::visual
