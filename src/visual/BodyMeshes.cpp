// What the mesh service does with bodies: of all its sources this one alone knows their classes.

#include "mesh/FaceColors.h"
#include "mesh/MeshManager.h"
#include "mesh/ShapeTriangles.h"
#include "mesh/paint/PaintMesh.h"
#include "platform/geometry/ClosedSolids.h"
#include "scene/core/ClosedMeshes.h"
#include "scene/core/SceneCore.h"
#include "visual/MeshVisual.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

FaceFilter visibleFacesOf(const SolidVisual& solid)
{
    return [&solid](unsigned face) { return solid.isFaceVisible(face); };
}

bool showsAllFaces(const SolidVisual& solid)
{
    for (unsigned face = 1; face <= static_cast<unsigned>(solid.getFaceMap().Extent()); ++face)
        if (!solid.isFaceVisible(face))
            return false;
    return true;
}

/// Notes a mesh of which only the outsides can be seen. One with hidden faces is open.
void noteIfClosed(const SolidVisual& solid, const std::string& meshName)
{
    if (showsAllFaces(solid) && geometry::areSolidsClosed(solid.getShape()))
        SceneCore::Get()->record<ClosedMeshes>().add(
            Ogre::MeshManager::getSingleton().getByName(meshName)->getHandle());
}

} // namespace

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
    noteIfClosed(*solid, name);
}

std::unique_ptr<Mesh> MeshManager::getShapeMesh(const TopoDS_Shape&, const layout::FaceMap& faces, SolidVisual* solid,
                                                const ColorInfo* colors)
{
    return makeShapeMesh(solid->getCurrentMeshName(), faces, visibleFacesOf(*solid), colors, solid->getName());
}

PaintMesh* MeshManager::createPaintMesh(FacetVisual* body)
{
    PaintMesh* paint = nullptr;
    if (auto* solid = dynamic_cast<SolidVisual*>(body)) {
        const std::unique_ptr<Mesh> mesh = getShapeMesh(solid->getShape(), solid->getFaceMap(), solid, nullptr);
        paint = mesh ? createPaintMeshFromMesh(mesh.get()) : nullptr;
    } else if (auto* drawn = dynamic_cast<MeshVisual*>(body)) {
        // What it draws: a mesh of the library's own stands in no registry.
        paint = drawn->getMesh() ? createPaintMeshFromMesh(drawn->getMesh()) : nullptr;
    }
    if (paint && hasMesh(paint->name)) // two bodies of one mesh
        paint->name += "_" + std::to_string(body->getId());
    return paint;
}

void MeshManager::SetFaceColor(SolidVisual* solid, unsigned face, const rob::Colorf& color)
{
    writeFaceColor(solid->getCurrentMeshName(), solid->getFaceMap(), visibleFacesOf(*solid), face, color);
}

void MeshManager::ColorReset(SolidVisual* solid)
{
    writeModelColors(solid->getCurrentMeshName(), solid->getFaceMap(), visibleFacesOf(*solid), solid->getId());
}

} // namespace vrk::visual
