#include "visual/DynamicRenderable.h"

#include "visual/RenderGroups.h"

#include <Ogre.h>

#include <algorithm>
#include <cmath>

namespace vrk::visual {
namespace {

/// The capacity that `count` vertices get where there is one of `present`.
std::uint64_t capacityFor(std::uint64_t count, std::uint64_t present)
{
    std::uint64_t capacity = std::max<std::uint64_t>(present, 1);
    while (capacity < count)
        capacity *= 2;
    if (present != 0)
        while (count < capacity / 2)
            capacity /= 2;
    return capacity;
}

} // namespace

DynamicRenderable::~DynamicRenderable()
{
    delete mRenderOp.indexData;
}

void DynamicRenderable::initialize(RenderOpType type, bool useIndices)
{
    renderOpType = type;
    switch (type) {
    case RenderOpType::Points:
        mRenderOp.operationType = Ogre::RenderOperation::OT_POINT_LIST;
        break;
    case RenderOpType::Lines:
        mRenderOp.operationType = Ogre::RenderOperation::OT_LINE_LIST;
        break;
    case RenderOpType::LineStrip:
        mRenderOp.operationType = Ogre::RenderOperation::OT_LINE_STRIP;
        break;
    default:
        break;
    }
    mRenderOp.useIndexes = useIndices;
    if (useIndices)
        mRenderOp.indexData = new Ogre::IndexData;
    vertexBufferCapacity = 0;
    indexBufferCapacity = 0;
    makeVertexData();
    setRenderQueueGroup(renderGroup::lines);
}

void DynamicRenderable::makeVertexData()
{
    vertices = std::make_shared<Ogre::VertexData>();
    mRenderOp.vertexData = vertices.get();
    createVertexDeclaration();
}

void DynamicRenderable::shareVertices(const DynamicRenderable& other)
{
    vertices = other.vertices;
    mRenderOp.vertexData = vertices.get();
    vertexBufferCapacity = other.vertexBufferCapacity;
}

void DynamicRenderable::prepareVertexBuffer(std::size_t count)
{
    const bool isShared = vertices.use_count() > 1;
    if (isShared)
        makeVertexData();
    Ogre::VertexData& data = *mRenderOp.vertexData;
    const std::uint64_t capacity = capacityFor(count, vertexBufferCapacity);
    if (isShared || capacity != vertexBufferCapacity) {
        vertexBufferCapacity = capacity;
        data.vertexBufferBinding->setBinding(0, Ogre::HardwareBufferManager::getSingleton().createVertexBuffer(
                                                    data.vertexDeclaration->getVertexSize(0), capacity,
                                                    Ogre::HardwareBuffer::HBU_DYNAMIC_WRITE_ONLY, false));
        // OGRE tells an old buffer from a new one by its address alone, which a second change before the next frame can
        // bring back. A touched declaration is always bound anew.
        const Ogre::VertexElement first = *data.vertexDeclaration->getElement(0);
        data.vertexDeclaration->modifyElement(0, first.getSource(), first.getOffset(), first.getType(),
                                              first.getSemantic(), first.getIndex());
    }
    data.vertexCount = count;
}

Ogre::Real DynamicRenderable::getBoundingRadius() const
{
    return std::sqrt(std::max(mBox.getMinimum().squaredLength(), mBox.getMaximum().squaredLength()));
}

Ogre::Real DynamicRenderable::getSquaredViewDepth(const Ogre::Camera* camera) const
{
    const Ogre::Vector3 middle = (mBox.getMinimum() + mBox.getMaximum()) * 0.5f;
    return camera->getDerivedPosition().squaredDistance(middle);
}

} // namespace vrk::visual
