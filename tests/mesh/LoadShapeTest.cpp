#include "OgreMeshes.h"
#include "mesh/MeshManager.h"
#include "platform/common/Logger.h"
#include "platform/geometry/BodyColorTool.h"
#include "support/SceneFixture.h"
#include "support/ThrowsExactly.h"
#include "visual/SolidVisual.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRep_Tool.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

namespace vrk::visual {
namespace {

using rob::Colorf;
using test::meshedBox;
using test::ogreMesh;
using test::vertexDataOf;
using test::verticesOf;

constexpr std::size_t boxVertices = 24;

class LoadShape : public test::SceneFixture {
protected:
    /// A solid that has not loaded its mesh; its mesh's name is its own.
    SolidVisual* solidOf(const TopoDS_Shape& shape) { return new SolidVisual(shape, world); }

    Colorf firstColor(const std::string& mesh)
    {
        const std::vector<float> vertices = verticesOf(mesh);
        return {vertices[6], vertices[7], vertices[8]};
    }

    MeshManager& manager = *MeshManager::Get();
};

TopoDS_Shape boxWithoutTriangles()
{
    return BRepPrimAPI_MakeBox(1, 2, 3).Shape();
}

} // namespace

TEST_F(LoadShape, UploadsTheSolidUnderItsCurrentName)
{
    SolidVisual* solid = solidOf(meshedBox(1, 2, 3));

    manager.loadShape(solid, {"#FF0000", {}});

    const std::string name = solid->getCurrentMeshName();
    ASSERT_NE(ogreMesh(name), nullptr);
    EXPECT_EQ(vertexDataOf(name).vertexCount, boxVertices);
    EXPECT_EQ(ogreMesh(name)->getBounds(), Ogre::AxisAlignedBox(0, 0, 0, 1, 2, 3));
    EXPECT_EQ(firstColor(name), Colorf(1, 0, 0));
    EXPECT_FALSE(manager.hasMesh(name)); // no copy of the triangles stays
    manager.removeOgreMesh(name);
}

TEST_F(LoadShape, KnownNameAddsAUserAndIgnoresTheNewColours)
{
    SolidVisual* solid = solidOf(meshedBox(1, 2, 3));
    const std::string name = solid->getCurrentMeshName();
    manager.loadShape(solid, {"#FF0000", {}});

    manager.loadShape(solid, {"#0000FF", {}});

    EXPECT_EQ(firstColor(name), Colorf(1, 0, 0));
    manager.removeOgreMesh(name);
    EXPECT_NE(ogreMesh(name), nullptr);
    manager.removeOgreMesh(name);
    EXPECT_EQ(ogreMesh(name), nullptr);
}

TEST_F(LoadShape, LastUserTakesTheCountAlong)
{
    SolidVisual* solid = solidOf(meshedBox(1, 2, 3));
    const std::string name = solid->getCurrentMeshName();
    manager.loadShape(solid, {});
    manager.removeOgreMesh(name);
    auto* registered = new Mesh(name);
    manager.addMesh(registered);

    manager.removeOgreMesh(name);

    EXPECT_NE(ogreMesh(name), nullptr) << "it is no solid's now";
    manager.deleteMesh(registered);
}

TEST_F(LoadShape, TakesTheModelsColoursWhereNoneAreGiven)
{
    const auto body = test::addModelBody(meshedBox(1, 2, 3), "colours", "#00FF00");
    auto* solid = new SolidVisual(body.get(), body->getShape(), world);
    const std::string name = solid->getCurrentMeshName();

    manager.loadShape(solid);

    EXPECT_EQ(firstColor(name), Colorf(0, 1, 0));
    manager.removeOgreMesh(name);
}

TEST_F(LoadShape, MeshGoesWithTheLastOfTwoSolidsOfOneName)
{
    const TopoDS_Shape box = meshedBox(1, 2, 3);
    const auto first = test::addModelBody(box, "shared");
    const auto second = test::addModelBody(box, "shared");
    SolidVisual::Build(world, first.get(), box);
    SolidVisual::Build(world, second.get(), box);
    ASSERT_NE(ogreMesh("shared"), nullptr);

    scene.deleteVisual(Scene::GetVisual(first->getId()));
    EXPECT_NE(ogreMesh("shared"), nullptr);

    scene.deleteVisual(Scene::GetVisual(second->getId()));
    EXPECT_EQ(ogreMesh("shared"), nullptr);
}

TEST_F(LoadShape, ShapeWithoutTrianglesIsRefusedAndItsUserStaysCounted)
{
    SolidVisual* solid = solidOf(boxWithoutTriangles());
    const std::string name = solid->getCurrentMeshName();

    EXPECT_THAT([&] { manager.loadShape(solid, {}); }, test::throwsExactly<NoTriangleMesh>(std::exception().what()))
        << "it has no text of its own";

    EXPECT_EQ(ogreMesh(name), nullptr);
    manager.removeOgreMesh(name); // takes the count back; there is no mesh to remove
    manager.removeOgreMesh(name);
}

TEST_F(LoadShape, FailureLeavesTheNameFreeForTheNextLoad)
{
    SolidVisual* solid = solidOf(meshedBox(1, 2, 3));
    const std::string name = solid->getCurrentMeshName();
    EXPECT_THROW(manager.loadShape(solid, {"#nonsense", {}}), std::invalid_argument);

    manager.loadShape(solid, {"#FF0000", {}});

    EXPECT_EQ(firstColor(name), Colorf(1, 0, 0));
    manager.removeOgreMesh(name); // the one user that the failed load has left, not a second one
    EXPECT_EQ(ogreMesh(name), nullptr);
}

TEST_F(LoadShape, HiddenFacesAreNotInTheMeshAndInItsName)
{
    const auto body = test::addModelBody(meshedBox(1, 2, 3), "hidden_faces");
    SolidVisual::Build(world, body.get(), body->getShape());
    auto* solid = static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));

    solid->setFaceVisible(2, false);

    EXPECT_EQ(vertexDataOf("hidden_faces").vertexCount, boxVertices);
    EXPECT_EQ(vertexDataOf("hidden_faces_2").vertexCount, boxVertices - 4);
}

TEST_F(LoadShape, WarningsCallTheSolidByItsVisualsName)
{
    const auto body = test::addModelBody(BRepPrimAPI_MakeBox(1, 2, 3).Shape(), "half_meshed");
    TopExp_Explorer first(body->getShape(), TopAbs_FACE);
    const BRepMesh_IncrementalMesh mesher(first.Current(), 0.5);
    auto* solid = new SolidVisual(body.get(), body->getShape(), world);
    std::vector<std::string> warnings;
    AppLogger::inst()->setListener([&](LogLevel, const std::string& text) { warnings.push_back(text); });

    manager.loadShape(solid);
    AppLogger::inst()->setListener({});

    ASSERT_EQ(warnings.size(), 5u);
    EXPECT_NE(solid->getName(), solid->getCurrentMeshName());
    EXPECT_EQ(warnings[0], "Face 2 of '" + solid->getName() + "' has no triangulation, it is missing in rendering");
    manager.removeOgreMesh(solid->getCurrentMeshName());
}

TEST_F(LoadShape, ShapeMeshWithoutColoursHasNone)
{
    SolidVisual* solid = solidOf(meshedBox(1, 2, 3));

    const auto mesh = MeshManager::getShapeMesh(solid->getShape(), solid->getFaceMap(), solid, nullptr);

    EXPECT_EQ(mesh->name, solid->getCurrentMeshName());
    EXPECT_EQ(mesh->vertices.size(), boxVertices);
    EXPECT_TRUE(mesh->colors.empty());
    EXPECT_EQ(ogreMesh(mesh->name), nullptr);
}

} // namespace vrk::visual
