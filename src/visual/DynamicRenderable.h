#pragma once

#include "platform/common/Export.h"
#include "scene/math/Color.h"

#include <OgreSimpleRenderable.h>

#include <cstdint>
#include <memory>

namespace vrk::visual {

/// Something drawn from a vertex buffer that changes its size as the data behind it does.
///
/// Owner: whoever makes it; OGRE only attaches it to a node. Thread: render thread.
class VRK_EXPORT DynamicRenderable : public Ogre::SimpleRenderable {
public:
    DynamicRenderable() = default;
    ~DynamicRenderable() override;
    DynamicRenderable(const DynamicRenderable&) = delete;
    DynamicRenderable& operator=(const DynamicRenderable&) = delete;

    /// From the local origin to the farther one of the two outermost corners of the OGRE box.
    Ogre::Real getBoundingRadius() const override;
    RenderOpType getRenderOpType() const { return renderOpType; }
    /// Vertices that the present buffer can hold: a power of two, or 0 where there is no buffer.
    std::uint64_t getVertexBufferCapacity() const { return vertexBufferCapacity; }

protected:
    /// To be called once, from the constructor of the class that is built. A type outside the table leaves OGRE's own.
    void initialize(RenderOpType type, bool useIndices);
    /// Makes room for `count` vertices and sets the vertex count. The buffer doubles as it must and shrinks only where
    /// less than half of it is used, so a line that is edited every frame seldom gets another one.
    /// Vertices that others draw as well are left to them.
    void prepareVertexBuffer(std::size_t count);
    /// Draws the vertices of another one of the same class, and has them in common with it until it prepares its own.
    void shareVertices(const DynamicRenderable& other);

    virtual void createVertexDeclaration() = 0;

public:
    /// To the middle of the OGRE box. The box is local, so the order of see-through lines on moved nodes is a rough one.
    Ogre::Real getSquaredViewDepth(const Ogre::Camera* camera) const override;

private:
    void makeVertexData();

    RenderOpType renderOpType{};
    std::shared_ptr<Ogre::VertexData> vertices; // what OGRE's operation points to
    std::uint64_t vertexBufferCapacity = 0;
    std::uint64_t indexBufferCapacity = 0; // read by nobody: what is drawn so far needs no indices
};

} // namespace vrk::visual
