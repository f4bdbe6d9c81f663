#include "visual/DynamicLines.h"

#include "scene/core/OgreCompat.h"

#include <Ogre.h>

#include <cstring>
#include <utility>

namespace vrk::visual {

DynamicLines::DynamicLines(RenderOpType type)
{
    initialize(type, false);
}

void DynamicLines::createVertexDeclaration()
{
    mRenderOp.vertexData->vertexDeclaration->addElement(0, 0, Ogre::VET_FLOAT3, Ogre::VES_POSITION);
}

void DynamicLines::addPoint(float x, float y, float z)
{
    ownPoints().emplace_back(x, y, z);
    dirty = true;
}

void DynamicLines::setPoint(unsigned index, const rob::Vec3Template<float>& point)
{
    ownPoints()[index] = rob::PosTemplate<float>(point);
    dirty = true;
}

void DynamicLines::clear()
{
    ownPoints().clear();
    dirty = true;
}

void DynamicLines::drawAs(std::shared_ptr<const DynamicLines> wanted)
{
    model = std::move(wanted);
    points = {};
    shareVertices(*model);
    mBox.merge(model->mBox);
    if (Ogre::SceneNode* node = getParentSceneNode())
        node->needUpdate(false);
    bounds = model->bounds;
    dirty = model->dirty;
}

std::vector<rob::PosTemplate<float>>& DynamicLines::ownPoints()
{
    if (model)
        points = std::exchange(model, nullptr)->points;
    return points;
}

void DynamicLines::update()
{
    if (dirty && getPoints().size() >= 2)
        fillVertexBuffer();
}

void DynamicLines::fillVertexBuffer()
{
    prepareVertexBuffer(points.size());
    {
        const Ogre::HardwareBufferLockGuard lock(mRenderOp.vertexData->vertexBufferBinding->getBuffer(0),
                                                 Ogre::HardwareBuffer::HBL_NORMAL);
        std::memcpy(lock.pData, points.data(), points.size() * sizeof(points.front()));
    }
    Box exact;
    Box drawn;
    for (const rob::PosTemplate<float>& point : points) {
        exact.addPoint(point);
        if (fitsBox(point))
            drawn.addPoint(point);
    }
    mBox.merge(toOgre(drawn));
    if (Ogre::SceneNode* node = getParentSceneNode())
        node->needUpdate(false);
    bounds = exact;
    bounds.expand();
    dirty = false;
}

void DynamicLines::_updateCustomGpuParameter(const Ogre::GpuProgramParameters::AutoConstantEntry& entry,
                                             Ogre::GpuProgramParameters* parameters) const
{
    constexpr std::size_t extentParameter = 2;
    constexpr std::size_t firstSmoothParameter = 3;
    constexpr std::size_t lightParameter = 4;
    if (entry.data == extentParameter) {
        const rob::Vec3Template<float> half = (bounds.max - bounds.min) * 0.5f;
        const bool isKnown = bounds.isValid();
        const Ogre::Vector3 middle = isKnown ? toOgre(bounds.min + half) : Ogre::Vector3::ZERO;
        parameters->_writeRawConstant(entry.physicalIndex,
                                      Ogre::Vector4(middle.x, middle.y, middle.z, isKnown ? half.length() : 0.0f),
                                      entry.elementCount);
    } else if (entry.data == firstSmoothParameter) {
        const std::size_t first = model ? model->firstSmooth : firstSmooth;
        const bool hasSmooth = first < getPoints().size() / 2;
        parameters->_writeRawConstant(
            entry.physicalIndex,
            Ogre::Vector4(hasSmooth ? static_cast<float>(first) : 0.0f, hasSmooth ? 1.0f : 0.0f, 0, 0),
            entry.elementCount);
    } else if (entry.data == lightParameter) {
        parameters->_writeRawConstant(entry.physicalIndex, Ogre::Vector4(light ? 1.0f : 0.0f, 0, 0, 0),
                                      entry.elementCount);
    } else {
        Ogre::SimpleRenderable::_updateCustomGpuParameter(entry, parameters);
    }
}

} // namespace vrk::visual
