// How changed colours of paint reach the GPU.

#include "mesh/MeshManager.h"
#include "mesh/paint/PaintMesh.h"

#include <Ogre.h>

#include <algorithm>
#include <bitset>
#include <cstring>
#include <optional>

namespace vrk::visual {
namespace {

static_assert(sizeof(Color) == 4 * sizeof(float));

/// The buffer that holds a mesh's colours and nothing else.
struct ColorBuffer {
    Ogre::HardwareVertexBufferSharedPtr buffer;
    std::size_t vertexSize = 0;
};

/// None if the mesh is not on the GPU.
std::optional<ColorBuffer> colorBufferOf(const PaintMesh& paint)
{
    const Ogre::MeshPtr mesh = Ogre::MeshManager::getSingleton().getByName(
        paint.name, Ogre::ResourceGroupManager::AUTODETECT_RESOURCE_GROUP_NAME);
    if (mesh == nullptr || mesh->getNumSubMeshes() == 0)
        return std::nullopt;
    const Ogre::VertexData& data = *mesh->getSubMesh(0)->vertexData;
    const Ogre::VertexElement* element = data.vertexDeclaration->findElementBySemantic(Ogre::VES_DIFFUSE);
    if (element == nullptr)
        return std::nullopt;
    return ColorBuffer{data.vertexBufferBinding->getBuffer(element->getSource()),
                       data.vertexDeclaration->getVertexSize(element->getSource())};
}

} // namespace

void MeshManager::updatePaintMeshColor(PaintMesh* mesh)
{
    std::vector<unsigned>& changed = mesh->getChangedColorIndexes();
    const auto colors = colorBufferOf(*mesh);
    if (!colors || changed.empty())
        return;
    const Ogre::HardwareBufferLockGuard lock(colors->buffer, Ogre::HardwareBuffer::HBL_WRITE_ONLY);
    auto* const first = static_cast<std::byte*>(lock.pData);
    for (const unsigned vertex : changed)
        std::memcpy(first + vertex * colors->vertexSize, &mesh->color(vertex), sizeof(Color));
    changed.clear();
}

void MeshManager::uploadPaintColors(PaintMesh* mesh)
{
    // Blocks of the table: marking them costs less than putting the changes in order, and a run of them is one copy.
    constexpr std::size_t blocks = 256;

    std::vector<unsigned>& changed = mesh->getChangedColorIndexes();
    const auto colors = colorBufferOf(*mesh);
    if (!colors || changed.empty())
        return;
    const std::size_t count = mesh->colorTable.size();
    const std::size_t blockSize = (count + blocks - 1) / blocks;
    std::bitset<blocks> isChanged;
    for (const unsigned vertex : changed)
        isChanged.set(vertex / blockSize);
    for (std::size_t begin = 0, end = 0; begin < blocks; begin = end + 1) {
        for (end = begin; end < blocks && isChanged[end]; ++end) {
        }
        if (end == begin)
            continue;
        const std::size_t first = begin * blockSize, last = std::min(end * blockSize, count);
        colors->buffer->writeData(first * colors->vertexSize, (last - first) * colors->vertexSize,
                                  mesh->colorTable.data() + first);
    }
    changed.clear();
}

} // namespace vrk::visual
