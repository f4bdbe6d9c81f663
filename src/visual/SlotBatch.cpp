#include "visual/SlotBatch.h"

#include "visual/RenderGroups.h"

#include <Ogre.h>

#include <algorithm>
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

SlotBatch::SlotBatch(Draws draws, std::initializer_list<Element> elements)
{
    mRenderOp.operationType =
        draws == Draws::Lines ? Ogre::RenderOperation::OT_LINE_LIST : Ogre::RenderOperation::OT_TRIANGLE_LIST;
    mRenderOp.useIndexes = draws == Draws::IndexedTriangles;
    mRenderOp.vertexData = new Ogre::VertexData;
    if (mRenderOp.useIndexes)
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
    if (mRenderOp.useIndexes ? mRenderOp.indexData->indexCount > 0 : mRenderOp.vertexData->vertexCount > 0)
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
    const std::size_t pair = 2 * vertexSize;
    std::size_t total = 0;
    for (Slot& slot : slots) {
        slot.first = total;
        if (slot.bytes.size() > slot.capacity || slot.capacity > 4 * slot.bytes.size())
            slot.capacity = (roomFor(slot.bytes.size()) + pair - 1) / pair * pair;
        total += slot.capacity;
    }
    Ogre::VertexData& data = *mRenderOp.vertexData;
    data.vertexCount = total / vertexSize;
    isLaidOut = true;
    dirty.resize(slots.size());
    std::iota(dirty.begin(), dirty.end(), std::size_t{0});
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
