#include "mesh/FaceColors.h"

#include "mesh/MeshManager.h"
#include "platform/common/Logger.h"

#include <Ogre.h>
#include <TopExp.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

namespace vrk::visual {
namespace {

static_assert(sizeof(rob::Colorf) == 3 * sizeof(float));

/// Where the colours of an uploaded mesh lie: vertex after vertex in one buffer, with the colour last in each vertex.
struct ColorSlots {
    Ogre::HardwareVertexBufferSharedPtr buffer;
    std::size_t vertexSize = 0;
    std::size_t offset = 0; // of the colour in a vertex
    std::size_t vertexCount = 0;
};

/// None if there is no such mesh (its load failed, or its last face is hidden) or its vertices have no colour.
std::optional<ColorSlots> colorSlotsOf(const std::string& meshName)
{
    const Ogre::MeshPtr mesh = Ogre::MeshManager::getSingleton().getByName(
        meshName, Ogre::ResourceGroupManager::AUTODETECT_RESOURCE_GROUP_NAME);
    if (mesh == nullptr || mesh->getNumSubMeshes() == 0)
        return std::nullopt;
    const Ogre::VertexData* data = mesh->getSubMesh(0)->vertexData;
    const Ogre::VertexElement* element =
        data == nullptr ? nullptr : data->vertexDeclaration->findElementBySemantic(Ogre::VES_DIFFUSE);
    if (element == nullptr)
        return std::nullopt;
    return ColorSlots{data->vertexBufferBinding->getBuffer(0), data->vertexDeclaration->getVertexSize(0),
                      element->getOffset(), data->vertexCount};
}

/// Writes colorOf(0), colorOf(1), ... into a run of vertices. Only the bytes of the run are locked. A run that the mesh does
/// not have is another shape's, and is told instead.
template <typename ColorOf>
void writeColors(const std::string& meshName, const ColorSlots& slots, VertexRun run, ColorOf colorOf)
{
    if (run.count == 0) // no lock of 0 bytes
        return;
    if (run.start + run.count > slots.vertexCount) {
        AppLogger::inst()->warn(fmt::format(
            "Mesh '{}' has {} vertices, and colours were given for {}: it is not that of the shape, and keeps "
            "its colours",
            meshName, slots.vertexCount, run.start + run.count));
        return;
    }
    const Ogre::HardwareBufferLockGuard lock(slots.buffer, run.start * slots.vertexSize, run.count * slots.vertexSize,
                                             Ogre::HardwareBuffer::HBL_WRITE_ONLY);
    auto* at = static_cast<std::byte*>(lock.pData) + slots.offset;
    for (std::size_t i = 0; i < run.count; ++i, at += slots.vertexSize) {
        const rob::Colorf color = colorOf(i);
        std::memcpy(at, &color, sizeof(color));
    }
}

} // namespace

void MeshManager::SetColor(const std::string& meshName, const rob::Colorf& color)
{
    if (const auto slots = colorSlotsOf(meshName))
        writeColors(meshName, *slots, {0, slots->vertexCount}, [&color](std::size_t) { return color; });
}

void writeFaceColor(const std::string& meshName, const layout::FaceMap& faces, const FaceFilter& isVisible,
                    unsigned face, const rob::Colorf& color)
{
    const auto slots = colorSlotsOf(meshName);
    if (!slots)
        return;
    const VertexRun run = runOfFace(faces, isVisible, face);
    writeColors(meshName, *slots, run, [&color](std::size_t) { return color; });
}

void writeRunColor(const std::string& meshName, const VertexRun& run, const rob::Colorf& color)
{
    const auto slots = colorSlotsOf(meshName);
    if (!slots || run.start >= slots->vertexCount)
        return;
    const std::size_t count = std::min(run.count, slots->vertexCount - run.start);
    writeColors(meshName, *slots, {run.start, count}, [&color](std::size_t) { return color; });
}

rob::Colorf MeshManager::GetFaceColor(const std::string& meshName, const TopoDS_Shape& shape, unsigned face)
{
    layout::FaceMap faces;
    TopExp::MapShapes(shape, TopAbs_FACE, faces);
    const std::size_t vertex = runOfFace(
                                   faces, [](unsigned) { return true; }, face)
                                   .start;
    rob::Colorf color;
    const auto slots = colorSlotsOf(meshName);
    if (!slots || vertex >= slots->vertexCount)
        return color;
    const Ogre::HardwareBufferLockGuard lock(slots->buffer, vertex * slots->vertexSize, slots->vertexSize,
                                             Ogre::HardwareBuffer::HBL_READ_ONLY);
    std::memcpy(&color, static_cast<const std::byte*>(lock.pData) + slots->offset, sizeof(color));
    return color;
}

void writeModelColors(const std::string& meshName, const layout::FaceMap& faces, const FaceFilter& isVisible,
                      unsigned body)
{
    const auto slots = colorSlotsOf(meshName);
    if (!slots)
        return;
    const std::vector<rob::Colorf> colors = vertexColors(faces, isVisible, geometry::BodyColorTool::GetColorInfo(body));
    writeColors(meshName, *slots, {0, colors.size()}, [&colors](std::size_t i) { return colors[i]; });
}

} // namespace vrk::visual
