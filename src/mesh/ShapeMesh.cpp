#include "mesh/MeshManager.h"
#include "mesh/ShapeTriangles.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>

namespace vrk::visual {

void MeshManager::loadShape(SolidVisual* solid)
{
    loadShape(solid, geometry::BodyColorTool::GetColorInfo(solid->getId()));
}

void MeshManager::loadShape(SolidVisual* solid, const ColorInfo& colors)
{
    const std::string name = solid->getCurrentMeshName();
    if (Ogre::MeshManager::getSingleton().resourceExists(name,
                                                         Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME)) {
        ++ogreMeshUsers[name];
        return;
    }
    ogreMeshUsers[name] = 1; // stays where the load fails; the next one starts afresh
    const std::unique_ptr<Mesh> mesh = getShapeMesh(solid->getShape(), solid->getFaceMap(), solid, &colors);
    if (mesh == nullptr)
        throw NoTriangleMesh();
    mesh->name = name;
    loadToGpu(mesh.get());
}

std::unique_ptr<Mesh> MeshManager::getShapeMesh(const TopoDS_Shape&, const layout::FaceMap& faces, SolidVisual* solid,
                                                const ColorInfo* colors)
{
    return makeShapeMesh(
        solid->getCurrentMeshName(), faces, [solid](unsigned face) { return solid->isFaceVisible(face); }, colors,
        solid->getName());
}

} // namespace vrk::visual
