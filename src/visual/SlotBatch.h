#pragma once

#include "platform/common/Export.h"
#include "scene/math/Color.h"

#include <OgreHardwareVertexBuffer.h>
#include <OgreSimpleRenderable.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vrk::visual {

/// As a vertex has it in four bytes; opaque.
std::uint32_t packedColor(const rob::Colorf& color);

/// Vertices of many things in one buffer, so that they are drawn at once. Each thing has a slot, which is written by itself;
/// what changed reaches the GPU with the next picture.
///
/// It has no box: it is never culled, and fits of the view pass it over.
///
/// Owner: whoever makes it; OGRE only attaches it to a node. Thread: render thread.
class VRK_EXPORT SlotBatch : public Ogre::SimpleRenderable {
public:
    /// Quads have four vertices each: two at one side, then the two across from them. Of triangles it draws what a derived
    /// class has in the index data, which is empty at first.
    enum class Draws { Quads, IndexedTriangles };
    /// Of a vertex, in the order in which they lie in it.
    struct Element {
        Ogre::VertexElementType type;
        Ogre::VertexElementSemantic semantic;
        unsigned short index = 0;
    };

    SlotBatch(Draws draws, std::initializer_list<Element> elements);
    ~SlotBatch() override;
    SlotBatch(const SlotBatch&) = delete;
    SlotBatch& operator=(const SlotBatch&) = delete;

    std::size_t slotCount() const { return slots.size(); }
    /// New slots are empty.
    void setSlotCount(std::size_t count);
    /// In place of what was in the slot. Vertices of zeros must draw nothing: they fill what room it does not use.
    template <typename Vertex>
    void write(std::size_t slot, const std::vector<Vertex>& vertices)
    {
        writeBytes(slot, std::as_bytes(std::span(vertices)));
    }

    /// How many bytes the last picture that brought anything took to the GPU.
    std::size_t getUploadedBytes() const { return uploadedBytes; }

    void _updateRenderQueue(Ogre::RenderQueue* queue) override;
    Ogre::Real getBoundingRadius() const override { return 0; }
    Ogre::Real getSquaredViewDepth(const Ogre::Camera*) const override { return 0; }

protected:
    /// Brings what changed to the GPU. Slots have their places then.
    void upload();
    std::size_t firstVertexOf(std::size_t slot) const { return slots[slot].first / vertexSize; }

private:
    struct Slot {
        std::vector<std::byte> bytes;
        std::size_t first = 0;    // byte in the buffer
        std::size_t capacity = 0; // bytes; what the slot does not fill is zeros
        bool isDirty = false;
    };

    void writeBytes(std::size_t slot, std::span<const std::byte> bytes);
    void layOut();
    void fill();
    void indexQuads();

    Draws draws;
    std::size_t vertexSize = 0;
    std::vector<Slot> slots;
    std::vector<std::size_t> dirty; // slots
    bool isLaidOut = true;          // the slots have their room in the buffer
    std::size_t uploadedBytes = 0;
};

} // namespace vrk::visual
