#pragma once

#include "scene/math/Color.h"
#include "visual/BodyVisual.h"

namespace Ogre {
class Entity;
}

namespace vrk::visual {

/// A body made of faces. While it is selected it is drawn in a render queue group of its own, so that an outline can be
/// drawn around what lies in that group.
class VRK_EXPORT FacetVisual : public BodyVisual {
public:
    using BodyVisual::BodyVisual;
    FacetVisual(const FacetVisual&) = default;

    void setSelected() override;
    void clearHighlightOrSelect() override;
    /// The model's colours.
    virtual void resetColor() = 0;
    virtual void setBodyColor(const rob::ColorTemplate<float>& color, float alpha) = 0;
    /// Null where there is nothing to draw.
    virtual Ogre::Entity* getEntity() const = 0;
    virtual const std::string& getMeshName() const = 0;

    void useNamedMaterial(const std::string& name) { useMaterial(name); }

protected:
    /// Makes an entity of an OGRE mesh on this node. Throws what OGRE does.
    Ogre::Entity* makeEntity(const std::string& entityName, const std::string& meshName);
    // Of an entity's OGRE mesh; 0 for null
    static std::uint64_t TrianglesOf(const Ogre::Entity* entity);
    static std::uint64_t VerticesOf(const Ogre::Entity* entity);

    /// Of the body, by which its edges are chosen.
    void suitEdges(const rob::ColorTemplate<float>& color);

private:
    void setRenderQueueGroup(unsigned char group);
};

} // namespace vrk::visual
