#pragma once

#include <Ogre.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

/// What an uploaded mesh holds, read back from OGRE.
namespace vrk::test {

inline Ogre::MeshPtr ogreMesh(const std::string& name)
{
    return Ogre::MeshManager::getSingleton().getByName(name, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
}

inline const Ogre::VertexData& vertexDataOf(const std::string& name)
{
    return *ogreMesh(name)->getSubMesh(0)->vertexData;
}

/// All floats of the vertex buffer, vertex after vertex.
inline std::vector<float> verticesOf(const std::string& name)
{
    const Ogre::VertexData& data = vertexDataOf(name);
    std::vector<float> floats(data.vertexCount * data.vertexDeclaration->getVertexSize(0) / sizeof(float));
    const Ogre::HardwareBufferLockGuard lock(data.vertexBufferBinding->getBuffer(0),
                                             Ogre::HardwareBuffer::HBL_READ_ONLY);
    std::memcpy(floats.data(), lock.pData, floats.size() * sizeof(float));
    return floats;
}

inline std::vector<unsigned> indicesOf(const std::string& name)
{
    const Ogre::IndexData& data = *ogreMesh(name)->getSubMesh(0)->indexData;
    std::vector<unsigned> indices(data.indexCount);
    const Ogre::HardwareBufferLockGuard lock(data.indexBuffer, Ogre::HardwareBuffer::HBL_READ_ONLY);
    std::memcpy(indices.data(), lock.pData, indices.size() * sizeof(unsigned));
    return indices;
}

} // namespace vrk::test
