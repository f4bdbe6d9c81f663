#include "mesh/MeshManager.h"

#include "mesh/PlyReader.h"
#include "mesh/ProceduralMeshes.h"
#include "mesh/StlReader.h"
#include "mesh/TextMesh.h"
#include "mesh/VertexUpload.h"
#include "mesh/paint/PaintMesh.h"
#include "scene/core/OgreCompat.h"

#include <Ogre.h>

#include <array>
#include <stdexcept>
#include <utility>
#include <vector>

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

void uploadVertices(Ogre::VertexData& data, const Mesh& mesh)
{
    std::vector<VertexAttribute> attributes{VertexAttribute::Of(Ogre::VES_POSITION, mesh.vertices)};
    if (!mesh.normals.empty())
        attributes.push_back(VertexAttribute::Of(Ogre::VES_NORMAL, mesh.normals));
    // The colour stays last: who rewrites the colours steps from one vertex's colour to the next.
    if (!mesh.colors.empty())
        attributes.push_back(VertexAttribute::Of(Ogre::VES_DIFFUSE, mesh.colors));
    VertexUpload(data, mesh.vertices.size()).addSource(attributes, Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY);
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

/// Makes the OGRE mesh of the mesh's name, unless there is one.
template <typename UploadVertices>
void makeOgreMesh(Mesh& mesh, const UploadVertices& upload)
{
    if (hasOgreMesh(mesh.name))
        return;
    const Ogre::MeshPtr ogreMesh = Ogre::MeshManager::getSingleton().createManual(mesh.name, defaultGroup());
    Ogre::SubMesh* subMesh = ogreMesh->createSubMesh();
    subMesh->useSharedVertices = false;
    subMesh->operationType = Ogre::RenderOperation::OT_TRIANGLE_LIST;
    subMesh->vertexData = OGRE_NEW Ogre::VertexData();
    upload(*subMesh->vertexData);
    uploadIndices(*subMesh->indexData, mesh.indices);
    ogreMesh->_setBounds(drawnBounds(mesh), false);
    ogreMesh->load();
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

void MeshManager::addPaintMesh(PaintMesh* mesh)
{
    meshes[mesh->name] = mesh;
    loadToGpu(mesh);
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
    makeOgreMesh(*mesh, [mesh](Ogre::VertexData& data) { uploadVertices(data, *mesh); });
}

void MeshManager::loadToGpu(PaintMesh* mesh)
{
    makeOgreMesh(*mesh, [mesh](Ogre::VertexData& data) {
        // What its maker left out: nothing is read past the ends.
        const std::size_t count = mesh->vertices.size();
        mesh->normals.resize(count, {0, 0, 1});
        mesh->colorTable.resize(count, Color{0, 0, 1, 0});
        VertexUpload upload(data, count);
        upload.addSource(std::array{VertexAttribute::Of(Ogre::VES_POSITION, mesh->vertices),
                                    VertexAttribute::Of(Ogre::VES_NORMAL, mesh->normals)},
                         Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY);
        upload.addSource(std::array{VertexAttribute::Of(Ogre::VES_DIFFUSE, mesh->colorTable)},
                         Ogre::HardwareBuffer::HBU_DYNAMIC_WRITE_ONLY);
    });
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

Mesh* MeshManager::loadPly(const std::string& path)
{
    if (!path.ends_with(".ply"))
        throw std::runtime_error("Not ply file");
    if (Mesh* known = getMesh(path))
        return known;
    auto mesh = std::make_unique<Mesh>(readPly(path));
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
