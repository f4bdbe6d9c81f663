#include "visual/SlotBatch.h"

#include "visual/RenderGroups.h"

#include <Ogre.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>

namespace vrk::visual {
namespace {

/// So that a number that gets a digit more stays in its slot.
std::size_t roomFor(std::size_t bytes)
{
    return bytes + bytes / 4;
}

} // namespace

std::uint32_t packedColor(const rob::Colorf& color)
{
    const auto byte = [](float part) {
        return static_cast<std::uint32_t>(std::lround(std::clamp(part, 0.f, 1.f) * 255));
    };
    return byte(color.r) | byte(color.g) << 8 | byte(color.b) << 16 | 0xFF000000u;
}

SlotBatch::SlotBatch(Draws draws, std::initializer_list<Element> elements) : draws(draws)
{
    mRenderOp.operationType = Ogre::RenderOperation::OT_TRIANGLE_LIST;
    mRenderOp.useIndexes = true;
    mRenderOp.vertexData = new Ogre::VertexData;
    mRenderOp.indexData = new Ogre::IndexData;
    for (const Element& element : elements) {
        mRenderOp.vertexData->vertexDeclaration->addElement(0, vertexSize, element.type, element.semantic,
                                                            element.index);
        vertexSize += Ogre::VertexElement::getTypeSize(element.type);
    }
    setBoundingBox(Ogre::AxisAlignedBox::BOX_INFINITE);
    setRenderQueueGroup(renderGroup::lines);
}

SlotBatch::~SlotBatch()
{
    delete mRenderOp.vertexData;
    delete mRenderOp.indexData;
}

void SlotBatch::setSlotCount(std::size_t count)
{
    if (count == slots.size())
        return;
    slots.resize(count);
    isLaidOut = false;
}

void SlotBatch::writeBytes(std::size_t index, std::span<const std::byte> bytes)
{
    Slot& slot = slots.at(index);
    slot.bytes.assign(bytes.begin(), bytes.end());
    if (bytes.size() > slot.capacity)
        isLaidOut = false;
    if (!slot.isDirty)
        dirty.push_back(index);
    slot.isDirty = true;
}

void SlotBatch::_updateRenderQueue(Ogre::RenderQueue* queue)
{
    upload();
    if (mRenderOp.indexData->indexCount > 0)
        SimpleRenderable::_updateRenderQueue(queue);
}

void SlotBatch::upload()
{
    if (isLaidOut && dirty.empty())
        return;
    uploadedBytes = 0;
    if (!isLaidOut)
        layOut();
    fill();
    for (Slot& slot : slots)
        slot.isDirty = false;
    dirty.clear();
}

void SlotBatch::layOut()
{
    const std::size_t quad = 4 * vertexSize;
    std::size_t total = 0;
    for (Slot& slot : slots) {
        slot.first = total;
        if (slot.bytes.size() > slot.capacity || slot.capacity > 4 * slot.bytes.size())
            slot.capacity = draws == Draws::Quads ? slot.bytes.size() // what it does not fill is drawn, if as nothing
                                                  : (roomFor(slot.bytes.size()) + quad - 1) / quad * quad;
        total += slot.capacity;
    }
    Ogre::VertexData& data = *mRenderOp.vertexData;
    data.vertexCount = total / vertexSize;
    isLaidOut = true;
    dirty.resize(slots.size());
    std::iota(dirty.begin(), dirty.end(), std::size_t{0});
    if (draws == Draws::Quads)
        indexQuads();
    if (total == 0)
        return;
    data.vertexBufferBinding->setBinding(
        0, Ogre::HardwareBufferManager::getSingleton().createVertexBuffer(
               vertexSize, data.vertexCount, Ogre::HardwareBuffer::HBU_DYNAMIC_WRITE_ONLY, false));
    // OGRE tells an old buffer from a new one by its address alone; a touched declaration is always bound anew.
    const Ogre::VertexElement first = *data.vertexDeclaration->getElement(0);
    data.vertexDeclaration->modifyElement(0, first.getSource(), first.getOffset(), first.getType(), first.getSemantic(),
                                          first.getIndex());
}

/// They are the same for any quads: those that there are already stay.
void SlotBatch::indexQuads()
{
    Ogre::IndexData& data = *mRenderOp.indexData;
    data.indexCount = mRenderOp.vertexData->vertexCount / 4 * 6;
    if (data.indexCount == 0 || (data.indexBuffer && data.indexBuffer->getNumIndexes() >= data.indexCount))
        return;
    std::vector<std::uint32_t> indices;
    indices.reserve(data.indexCount);
    for (std::uint32_t first = 0; indices.size() < data.indexCount; first += 4)
        for (const std::uint32_t corner : {0u, 1u, 2u, 2u, 1u, 3u})
            indices.push_back(first + corner);
    data.indexBuffer = Ogre::HardwareBufferManager::getSingleton().createIndexBuffer(
        Ogre::HardwareIndexBuffer::IT_32BIT, indices.size(), Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY);
    data.indexBuffer->writeData(0, indices.size() * sizeof(indices.front()), indices.data(), true);
}

/// One by one while few have changed: the buffer of a thousand dimensions is some megabytes.
void SlotBatch::fill()
{
    if (mRenderOp.vertexData->vertexCount == 0)
        return;
    Ogre::HardwareVertexBuffer& buffer = *mRenderOp.vertexData->vertexBufferBinding->getBuffer(0);
    std::vector<std::byte> bytes;
    const auto append = [&bytes](const Slot& slot) {
        bytes.insert(bytes.end(), slot.bytes.begin(), slot.bytes.end());
        bytes.resize(bytes.size() + slot.capacity - slot.bytes.size());
    };
    if (2 * dirty.size() > slots.size()) {
        bytes.reserve(buffer.getSizeInBytes());
        std::ranges::for_each(slots, append);
        buffer.writeData(0, bytes.size(), bytes.data(), true);
        uploadedBytes += bytes.size();
        return;
    }
    for (const std::size_t index : dirty) {
        const Slot& slot = slots[index];
        bytes.clear();
        append(slot);
        if (!bytes.empty())
            buffer.writeData(slot.first, bytes.size(), bytes.data());
        uploadedBytes += bytes.size();
    }
}

} // namespace vrk::visual
