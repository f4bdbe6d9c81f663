#include "mesh/VertexUpload.h"

#include <Ogre.h>

#include <cstring>

namespace vrk::visual {
namespace {

/// OGRE makes no buffer of 0 elements and locks no 0 bytes: an empty mesh has buffers of one element that nobody reads.
std::size_t bufferLength(std::size_t count)
{
    return count == 0 ? 1 : count;
}

Ogre::VertexElementType typeOf(const VertexAttribute& attribute)
{
    return attribute.width == 4 ? Ogre::VET_FLOAT4 : Ogre::VET_FLOAT3;
}

/// The attributes of each vertex side by side.
void interleave(float* target, std::span<const VertexAttribute> attributes, std::size_t vertexCount)
{
    for (std::size_t vertex = 0; vertex < vertexCount; ++vertex)
        for (const VertexAttribute& attribute : attributes) {
            const float* const values = attribute.values + vertex * attribute.width;
            // Copies of a size that the compiler knows are single instructions.
            if (attribute.width == 4)
                std::memcpy(target, values, 4 * sizeof(float));
            else
                std::memcpy(target, values, 3 * sizeof(float));
            target += attribute.width;
        }
}

} // namespace

VertexUpload::VertexUpload(Ogre::VertexData& data, std::size_t vertexCount) : data(data)
{
    data.vertexStart = 0;
    data.vertexCount = vertexCount;
}

void VertexUpload::addSource(std::span<const VertexAttribute> attributes, Ogre::HardwareBuffer::Usage usage)
{
    const unsigned short source = nextSource++;
    std::size_t vertexSize = 0;
    for (const VertexAttribute& attribute : attributes)
        vertexSize +=
            data.vertexDeclaration->addElement(source, vertexSize, typeOf(attribute), attribute.semantic).getSize();
    const Ogre::HardwareVertexBufferSharedPtr buffer = Ogre::HardwareBufferManager::getSingleton().createVertexBuffer(
        vertexSize, bufferLength(data.vertexCount), usage, false);
    data.vertexBufferBinding->setBinding(source, buffer);
    if (data.vertexCount == 0)
        return;
    const Ogre::HardwareBufferLockGuard lock(buffer, Ogre::HardwareBuffer::HBL_DISCARD);
    interleave(static_cast<float*>(lock.pData), attributes, data.vertexCount);
}

void uploadIndices(Ogre::IndexData& data, std::span<const unsigned> indices)
{
    data.indexStart = 0;
    data.indexCount = indices.size();
    data.indexBuffer = Ogre::HardwareBufferManager::getSingleton().createIndexBuffer(
        Ogre::HardwareIndexBuffer::IT_32BIT, bufferLength(data.indexCount), Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY,
        false);
    if (indices.empty())
        return;
    const Ogre::HardwareBufferLockGuard lock(data.indexBuffer, Ogre::HardwareBuffer::HBL_DISCARD);
    std::memcpy(lock.pData, indices.data(), indices.size_bytes());
}

} // namespace vrk::visual
