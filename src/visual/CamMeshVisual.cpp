#include "visual/CamMeshVisual.h"

#include "mesh/MeshManager.h"
#include "visual/Entities.h"

#include <Ogre.h>

#include <vector>

namespace vrk::visual {
namespace {

constexpr const char* entityName = "CAM_MESH_ENTITY";
constexpr const char* material = "MeshBody";

/// Those of earlier visuals, which left them behind.
void destroyDetachedEntities(Ogre::SceneManager& manager)
{
    std::vector<Ogre::MovableObject*> detached;
    for (const auto& [name, object] : manager.getMovableObjects(Ogre::EntityFactory::FACTORY_TYPE_NAME))
        if (name.starts_with(entityName) && !object->isAttached())
            detached.push_back(object);
    for (Ogre::MovableObject* object : detached)
        manager.destroyMovableObject(object);
}

} // namespace

CamMeshVisual::CamMeshVisual(Visual* parent) : Visual(parent) {}

CamMeshVisual::~CamMeshVisual() = default;

CamMeshVisual* CamMeshVisual::Build(Visual* parent, cadcam::TMesh<double>* mesh)
{
    std::unique_ptr<Mesh> loaded(MeshManager::Get()->loadCamMesh(mesh));
    auto* visual = new CamMeshVisual(parent);
    visual->mesh = std::move(loaded);
    destroyDetachedEntities(*visual->sceneNode->getCreator());
    visual->entity = attachEntity(*visual, entityName, visual->mesh->name);
    visual->setMaterial(material, material, material);
    return visual;
}

} // namespace vrk::visual
