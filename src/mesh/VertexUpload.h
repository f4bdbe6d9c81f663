#pragma once

#include "platform/common/Export.h"

#include <OgreHardwareBuffer.h>
#include <OgreHardwareVertexBuffer.h>

#include <cstddef>
#include <span>
#include <vector>

namespace Ogre {
class IndexData;
class VertexData;
} // namespace Ogre

namespace vrk::visual {

/// What all vertices have of one kind: `width` floats for each of them, vertex after vertex.
struct VertexAttribute {
    Ogre::VertexElementSemantic semantic = Ogre::VES_POSITION;
    const float* values = nullptr;
    unsigned width = 3;

    /// Of a vector of plain triples or quadruples of floats, one for each vertex.
    template <typename Value>
    static VertexAttribute Of(Ogre::VertexElementSemantic semantic, const std::vector<Value>& values)
    {
        static_assert(sizeof(Value) == 3 * sizeof(float) || sizeof(Value) == 4 * sizeof(float));
        return {semantic, reinterpret_cast<const float*>(values.data()), sizeof(Value) / sizeof(float)};
    }
};

/// Brings vertices to the GPU, source by source. Each source is a buffer of its own, in which its attributes lie vertex by
/// vertex: what changes later has a source of its own, and the rest is uploaded once.
///
/// Thread: render thread.
class VRK_EXPORT VertexUpload {
public:
    /// @param data  OGRE's vertex data, without a source so far; must outlive this.
    VertexUpload(Ogre::VertexData& data, std::size_t vertexCount);

    /// Adds the next source, from 0 on, with its attributes in that order. The values are copied before it returns.
    void addSource(std::span<const VertexAttribute> attributes, Ogre::HardwareBuffer::Usage usage);

private:
    Ogre::VertexData& data;
    unsigned short nextSource = 0;
};

/// 32-bit indices in a static buffer. Thread: render thread.
void uploadIndices(Ogre::IndexData& data, std::span<const unsigned> indices);

} // namespace vrk::visual
