#include "mesh/MeshManager.h"

#include "mesh/ProceduralMeshes.h"
#include "mesh/StlReader.h"
#include "mesh/TextMesh.h"
#include "scene/core/OgreCompat.h"

#include <Ogre.h>

#include <cstring>
#include <stdexcept>
#include <utility>

namespace vrk::visual {
namespace {

const std::string& defaultGroup()
{
    return Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME;
}

bool hasOgreMesh(const std::string& name)
{
    return Ogre::MeshManager::getSingleton().resourceExists(name, defaultGroup());
}

void removeOgreResource(const std::string& name, const std::string& group)
{
    // OGRE refuses to remove what is not there, as after a load that failed.
    if (Ogre::MeshManager::getSingleton().resourceExists(name, group))
        Ogre::MeshManager::getSingleton().remove(name, group);
}

/// Adds an element behind the others and moves `offset` behind it.
void addElement(Ogre::VertexDeclaration& declaration, std::size_t& offset, Ogre::VertexElementSemantic semantic)
{
    offset += declaration.addElement(0, offset, Ogre::VET_FLOAT3, semantic).getSize();
}

template <typename Triple>
float* store(float* target, const Triple& triple)
{
    static_assert(sizeof(Triple) == 3 * sizeof(float));
    std::memcpy(target, &triple, sizeof(Triple));
    return target + 3;
}

void writeVertices(float* target, const Mesh& mesh)
{
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
        target = store(target, mesh.vertices[i]);
        if (!mesh.normals.empty())
            target = store(target, mesh.normals[i]);
        if (!mesh.colors.empty())
            target = store(target, mesh.colors[i]);
    }
}

/// OGRE makes no buffer of 0 elements and locks no 0 bytes: an empty mesh has buffers of one element that nobody reads.
std::size_t bufferLength(std::size_t count)
{
    return count == 0 ? 1 : count;
}

void uploadVertices(Ogre::VertexData& data, const Mesh& mesh)
{
    // The colour stays last: who rewrites the colours steps from one vertex's colour to the next.
    std::size_t vertexSize = 0;
    addElement(*data.vertexDeclaration, vertexSize, Ogre::VES_POSITION);
    if (!mesh.normals.empty())
        addElement(*data.vertexDeclaration, vertexSize, Ogre::VES_NORMAL);
    if (!mesh.colors.empty())
        addElement(*data.vertexDeclaration, vertexSize, Ogre::VES_DIFFUSE);

    data.vertexStart = 0;
    data.vertexCount = mesh.vertices.size();
    const Ogre::HardwareVertexBufferSharedPtr buffer = Ogre::HardwareBufferManager::getSingleton().createVertexBuffer(
        vertexSize, bufferLength(data.vertexCount), Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY, false);
    data.vertexBufferBinding->setBinding(0, buffer);
    if (data.vertexCount == 0)
        return;
    const Ogre::HardwareBufferLockGuard lock(buffer, Ogre::HardwareBuffer::HBL_DISCARD);
    writeVertices(static_cast<float*>(lock.pData), mesh);
}

void uploadIndices(Ogre::IndexData& data, const std::vector<unsigned>& indices)
{
    data.indexStart = 0;
    data.indexCount = indices.size();
    data.indexBuffer = Ogre::HardwareBufferManager::getSingleton().createIndexBuffer(
        Ogre::HardwareIndexBuffer::IT_32BIT, bufferLength(data.indexCount), Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY,
        false);
    if (indices.empty())
        return;
    const Ogre::HardwareBufferLockGuard lock(data.indexBuffer, Ogre::HardwareBuffer::HBL_DISCARD);
    std::memcpy(lock.pData, indices.data(), indices.size() * sizeof(unsigned));
}

/// What OGRE is told of the mesh's extent: a file may hold coordinates that it cannot have in a box.
Ogre::AxisAlignedBox drawnBounds(Mesh& mesh)
{
    const Box& bounds = mesh.getBounds();
    if (fitsBox(bounds.min) && fitsBox(bounds.max))
        return toOgre(bounds);
    Box drawn;
    for (const rob::Posf& vertex : mesh.vertices)
        if (fitsBox(vertex))
            drawn.addPoint(vertex);
    return toOgre(drawn);
}

std::unique_ptr<MeshManager> instance;

/// How many visuals read a mesh, and whether it has been deleted meanwhile and goes with the last of them.
struct Held {
    unsigned holders = 0;
    bool isDeleted = false;
};
std::unordered_map<Mesh*, Held> heldMeshes;

Mesh* find(const std::unordered_map<std::string, Mesh*>& map, const std::string& name)
{
    const auto found = map.find(name);
    return found == map.end() ? nullptr : found->second;
}

} // namespace

MeshManager* MeshManager::Get()
{
    return instance.get();
}

void MeshManager::Init()
{
    if (instance == nullptr)
        instance = std::make_unique<MeshManager>();
}

MeshManager::MeshManager()
{
    createGlobleMeshes();
}

MeshManager::MeshManager(const MeshManager&) = default;
MeshManager& MeshManager::operator=(const MeshManager&) = default;
MeshManager::MeshManager(MeshManager&&) noexcept = default;
MeshManager& MeshManager::operator=(MeshManager&&) noexcept = default;
MeshManager::~MeshManager() = default;

// Registered meshes

void MeshManager::addMesh(Mesh* mesh)
{
    if (hasMesh(mesh->name))
        return;
    loadToGpu(mesh); // where it fails the mesh stays the caller's
    meshes.emplace(mesh->name, mesh);
}

Mesh* MeshManager::getMesh(const std::string& name)
{
    return find(meshes, name);
}

bool MeshManager::hasMesh(const std::string& name)
{
    return meshes.contains(name);
}

void MeshManager::deleteMesh(Mesh* mesh)
{
    meshes.erase(mesh->name);
    removeOgreResource(mesh->name, Ogre::ResourceGroupManager::AUTODETECT_RESOURCE_GROUP_NAME);
    const auto held = heldMeshes.find(mesh);
    if (held == heldMeshes.end())
        delete mesh;
    else
        held->second.isDeleted = true;
}

void MeshManager::holdMesh(Mesh* mesh)
{
    ++heldMeshes[mesh].holders;
}

void MeshManager::releaseMesh(Mesh* mesh)
{
    const auto held = heldMeshes.find(mesh);
    if (--held->second.holders > 0)
        return;
    if (held->second.isDeleted)
        delete mesh;
    heldMeshes.erase(held);
}

// Global meshes

void MeshManager::addGlobalMesh(Mesh* mesh)
{
    globalMeshes.try_emplace(mesh->name, mesh);
    loadToGpu(mesh);
}

Mesh* MeshManager::enterGlobalMesh(std::unique_ptr<Mesh> mesh)
{
    const auto [entry, isNew] = globalMeshes.try_emplace(mesh->name, mesh.get());
    if (isNew)
        mesh.release(); // kept to the end of the process
    return entry->second;
}

Mesh* MeshManager::getGlobalMesh(const std::string& name)
{
    return find(globalMeshes, name);
}

bool MeshManager::hasGlobalMesh(const std::string& name)
{
    return globalMeshes.contains(name);
}

// Upload

void MeshManager::loadToGpu(Mesh* mesh)
{
    if (hasOgreMesh(mesh->name))
        return;
    const Ogre::MeshPtr ogreMesh = Ogre::MeshManager::getSingleton().createManual(mesh->name, defaultGroup());
    Ogre::SubMesh* subMesh = ogreMesh->createSubMesh();
    subMesh->useSharedVertices = false;
    subMesh->operationType = Ogre::RenderOperation::OT_TRIANGLE_LIST;
    subMesh->vertexData = OGRE_NEW Ogre::VertexData();
    uploadVertices(*subMesh->vertexData, *mesh);
    uploadIndices(*subMesh->indexData, mesh->indices);
    ogreMesh->_setBounds(drawnBounds(*mesh), false);
    ogreMesh->load();
}

void MeshManager::removeOgreMesh(const std::string& name)
{
    const auto users = ogreMeshUsers.find(name);
    if (users == ogreMeshUsers.end())
        return;
    if (users->second != 1) {
        --users->second;
        return;
    }
    removeOgreResource(name, defaultGroup());
    ogreMeshUsers.erase(users);
}

// STL, flat meshes and text

Mesh* MeshManager::loadStl(const std::string& path)
{
    if (!path.ends_with(".stl") && !path.ends_with(".STL"))
        throw std::runtime_error("Not stl file");
    if (Mesh* known = getMesh(path))
        return known;
    auto mesh = std::make_unique<Mesh>(readStl(path));
    addMesh(mesh.get());
    return mesh.release();
}

Mesh* MeshManager::CreateMesh(std::string name, const std::vector<rob::PosTemplate<float>>& points,
                              const std::vector<unsigned>& indices)
{
    return makeFlatMesh(std::move(name), points, indices).release();
}

Mesh* MeshManager::CreateTextMesh(std::string text, double)
{
    return makeTextMesh(std::move(text)).release();
}

} // namespace vrk::visual
