#include "visual/MeshVisual.h"

#include "mesh/MeshManager.h"
#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "selection/SelectableObject.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "support/TempFolder.h"
#include "support/ThrowsExactly.h"

#include <Ogre.h>

#include <fstream>

namespace vrk::visual {
namespace {

class MeshVisualTest : public test::SceneFixture {
protected:
    std::string writeTriangle(const std::string& name)
    {
        const std::filesystem::path file = folder.path() / name;
        std::ofstream(file) << "solid s\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n"
                               "endloop\nendfacet\nendsolid s\n";
        return file.string();
    }
    MeshVisual* buildStl(const std::string& file, const std::string& color = "#FF8000")
    {
        auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
        const auto body = part->addBody("body");
        body->setGeometry(file, "stl");
        body->setColor(color);
        layout::Layout::inst().addPart(part);
        MeshVisual::Build(world, body.get());
        return static_cast<MeshVisual*>(Scene::GetVisual(body->getId()));
    }
    /// @param color  of the body; empty for none.
    MeshVisual* buildColoredPly(const std::string& color, const std::string& material = "Body")
    {
        const std::filesystem::path file = folder.path() / "colored.ply";
        std::ofstream(file)
            << "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty "
               "float z\nproperty uchar red\nproperty uchar green\nproperty uchar blue\nelement face "
               "1\nproperty list uchar int vertex_indices\nend_header\n0 0 0 255 0 0\n1 0 0 0 255 0\n0 1 "
               "0 0 0 255\n3 0 1 2\n";
        auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
        const auto body = part->addBody("body");
        body->setGeometry(file.string(), "mesh");
        body->setMaterialName(material);
        if (!color.empty())
            body->setColor(color);
        layout::Layout::inst().addPart(part);
        MeshVisual::Build(world, body.get());
        return static_cast<MeshVisual*>(Scene::GetVisual(body->getId()));
    }
    static std::string materialOf(const MeshVisual& visual)
    {
        return visual.getEntity()->getSubEntity(0)->getMaterialName();
    }
    static Ogre::Vector4 colorOf(const MeshVisual& visual)
    {
        return visual.getEntity()->getSubEntity(0)->getCustomParameter(0);
    }

    test::TempFolder folder;
};

TEST_F(MeshVisualTest, StlBodyIsRegisteredPickableAndColoured)
{
    const std::string file = writeTriangle("one.stl");

    MeshVisual* visual = buildStl(file);

    EXPECT_EQ(visual->getType(), VisualType::Mesh);
    EXPECT_TRUE(selection::VisualSelection::Get()->hasVisual(visual));
    EXPECT_EQ(visual->getMeshName(), file);
    EXPECT_TRUE(MeshManager::Get()->hasMesh(file));
    EXPECT_EQ(visual->getEntity()->getSubEntity(0)->getMaterialName(), "MeshBody");
    EXPECT_TRUE(colorOf(*visual).positionEquals(Ogre::Vector4(1, 0x80 / 255.0f, 0, 1), 1e-6f));
    EXPECT_EQ(Scene::GetVisual(visual->getId()), visual);
    EXPECT_FALSE(selection::VisualSelection::Get()->getObject(visual)->priority);
    visual->setSelected();
    EXPECT_EQ(visual->getEntity()->getSubEntity(0)->getMaterialName(), "MeshBodySelected");
    visual->setHighlighted();
    EXPECT_EQ(visual->getEntity()->getSubEntity(0)->getMaterialName(), "MeshBodyHighlighted");
}

TEST_F(MeshVisualTest, PlyBodyShowsTheColoursOfItsPoints)
{
    MeshVisual* visual = buildColoredPly("");

    EXPECT_EQ(visual->getTrianglesNum(), 1u);
    EXPECT_EQ(visual->getMesh()->colors.at(1), rob::Colorf(0, 1, 0));
    EXPECT_EQ(materialOf(*visual), "Body");
    visual->setSelected();
    EXPECT_EQ(materialOf(*visual), "BodySelected");
}

TEST_F(MeshVisualTest, ColourOfTheBodyCoversThoseOfThePoints)
{
    EXPECT_EQ(materialOf(*buildColoredPly("#FF8000")), "MeshBody");
    MeshVisual* visual = buildColoredPly("");

    visual->setBodyColor({1, 0, 0}, 1);
    EXPECT_EQ(materialOf(*visual), "MeshBody");
    EXPECT_EQ(colorOf(*visual), Ogre::Vector4(1, 0, 0, 1));

    visual->resetColor();
    EXPECT_EQ(materialOf(*visual), "Body") << "the body itself has none";
}

TEST_F(MeshVisualTest, LookThatAnApplicationChoseStays)
{
    MeshVisual* visual = buildColoredPly("#FF8000", "ABB");

    visual->setBodyColor({1, 0, 0}, 1);
    visual->resetColor();

    EXPECT_EQ(materialOf(*visual), "ABB");
}

TEST_F(MeshVisualTest, PlyIsLoadedOnceUnderItsPath)
{
    MeshVisual* visual = buildColoredPly("");
    MeshManager& manager = *MeshManager::Get();

    EXPECT_EQ(manager.loadPly(visual->getMeshName()), visual->getMesh());
    EXPECT_THAT([&] { manager.loadPly("a.stl"); }, test::throwsExactly<std::runtime_error>("Not ply file"));
    EXPECT_THAT([&] { manager.loadPly("/no/such.ply"); }, test::throwsExactly<std::runtime_error>("/no/such.ply"));
}

TEST_F(MeshVisualTest, DetectableIsThatOfThePart)
{
    const std::string file = writeTriangle("detectable.stl");
    auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
    const auto body = part->addBody("body");
    body->setGeometry(file, "stl");
    part->setDetectable(false);
    layout::Layout::inst().addPart(part);

    MeshVisual::Build(world, body.get());

    EXPECT_FALSE(selection::VisualSelection::Get()->isDetectable(Scene::GetVisual(body->getId())));
    EXPECT_TRUE(selection::VisualSelection::Get()->isDetectable(buildStl(file)));
}

TEST_F(MeshVisualTest, MeshThatIsAttachedSecondTakesThePlaceOfTheFirst)
{
    MeshVisual* visual = buildStl(writeTriangle("first.stl"));
    const std::string second = writeTriangle("second.stl");
    Ogre::SceneManager& manager = *visual->getSceneNode()->getCreator();
    const std::size_t entities = manager.getMovableObjects(Ogre::EntityFactory::FACTORY_TYPE_NAME).size();

    for (int i = 0; i < 2; ++i) { // also in place of itself
        visual->attachMesh(second);

        EXPECT_EQ(visual->getMeshName(), second);
        EXPECT_THAT(visual->getSceneNode()->getAttachedObjects(), testing::ElementsAre(visual->getEntity()));
        EXPECT_EQ(manager.getMovableObjects(Ogre::EntityFactory::FACTORY_TYPE_NAME).size(), entities);
    }
}

TEST_F(MeshVisualTest, DetachedMeshIsDrawnNoMoreAndStaysTheVisuals)
{
    const std::string file = writeTriangle("one.stl");
    MeshVisual* visual = buildStl(file);
    Ogre::SceneManager& manager = *visual->getSceneNode()->getCreator();
    const std::size_t entities = manager.getMovableObjects(Ogre::EntityFactory::FACTORY_TYPE_NAME).size();

    for (int i = 0; i < 2; ++i) { // also one that has none
        visual->detachMesh();

        EXPECT_EQ(visual->getEntity(), nullptr);
        EXPECT_TRUE(visual->getSceneNode()->getAttachedObjects().empty());
        EXPECT_EQ(manager.getMovableObjects(Ogre::EntityFactory::FACTORY_TYPE_NAME).size(), entities - 1);
        EXPECT_EQ(visual->getMeshName(), file);
        EXPECT_NE(visual->getMesh(), nullptr);
    }
    visual->setColor({1, 0, 0}, 1.0f); // nothing to colour
    EXPECT_EQ(visual->getBodiesNum(), 0u);
    visual->attachMesh(file);
    EXPECT_NE(visual->getEntity(), nullptr);
}

TEST_F(MeshVisualTest, VisualThatDiesWithItsMeshDetachedEndsTheMesh)
{
    const std::string file = writeTriangle("one.stl");
    MeshVisual* visual = buildStl(file);
    visual->detachMesh();

    scene.deleteVisual(visual);

    EXPECT_FALSE(MeshManager::Get()->hasMesh(file));
}

TEST_F(MeshVisualTest, MeshThatCannotBeReadLeavesTheOneThatIsShown)
{
    const std::string file = writeTriangle("shown.stl");
    MeshVisual* visual = buildStl(file);
    Ogre::Entity* shown = visual->getEntity();

    EXPECT_THROW(visual->attachMesh((folder / "absent.stl").string()), std::runtime_error);

    EXPECT_EQ(visual->getEntity(), shown);
    EXPECT_EQ(visual->getMeshName(), file);
}

TEST_F(MeshVisualTest, CountsOneBodyAndOneFace)
{
    MeshVisual* visual = buildStl(writeTriangle("counts.stl"));

    EXPECT_EQ(visual->getBodiesNum(), 1u);
    EXPECT_EQ(visual->getFacesNum(), 1u);
    EXPECT_EQ(visual->getTrianglesNum(), 1u);
    EXPECT_EQ(visual->getVerticesNum(), 3u);
}

TEST_F(MeshVisualTest, WithoutMeshItCountsNothing)
{
    auto* visual = new MeshVisual("empty", world);

    EXPECT_EQ(visual->getBodiesNum(), 0u);
    EXPECT_EQ(visual->getFacesNum(), 0u);
    EXPECT_EQ(visual->getTrianglesNum(), 0u);
    EXPECT_EQ(visual->getMesh(), nullptr);
    EXPECT_EQ(visual->getMeshName(), "");
    EXPECT_NO_THROW(visual->setColor({1, 1, 1}, 1));
}

TEST_F(MeshVisualTest, VisualOfAFileThatCannotBeReadStaysUnderItsNameWithoutMesh)
{
    const std::string absent = (folder.path() / "absent.stl").string();
    EXPECT_THROW(buildStl(absent), std::runtime_error);

    const std::vector<Visual*> left(world->getChildren().begin(), world->getChildren().end());
    const auto found = std::find_if(left.begin(), left.end(),
                                    [](const Visual* visual) { return visual->getType() == VisualType::Mesh; });
    ASSERT_NE(found, left.end());
    const auto& visual = static_cast<MeshVisual&>(**found);
    EXPECT_EQ(visual.getMesh(), nullptr);
    EXPECT_EQ(visual.getMeshName(), absent);
    EXPECT_FALSE(selection::VisualSelection::Get()->hasVisual(*found));
}

TEST_F(MeshVisualTest, GlobalMeshIsFoundByNameAndSurvives)
{
    auto* visual = new MeshVisual("arrow", world);
    visual->attachMesh("path_arrow_head");
    EXPECT_EQ(visual->getMesh(), MeshManager::Get()->getGlobalMesh("path_arrow_head"));
    EXPECT_EQ(visual->getEntity()->getName(), std::to_string(visual->getId()) + "path_arrow_head");

    scene.deleteVisual(visual);

    EXPECT_TRUE(MeshManager::Get()->hasGlobalMesh("path_arrow_head"));
    EXPECT_TRUE(Ogre::MeshManager::getSingleton().resourceExists(
        "path_arrow_head", Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME));
}

TEST_F(MeshVisualTest, GlobalMeshComesBeforeARegisteredOneOfItsName)
{
    const std::string name = "torus_half"; // a component: its name is free at OGRE
    MeshManager& manager = *MeshManager::Get();
    Mesh* registered = MeshManager::CreateMesh(name, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 2});
    manager.addMesh(registered);
    auto* visual = new MeshVisual("of two meshes", world);

    visual->attachMesh(name);
    EXPECT_EQ(visual->getMesh(), manager.getGlobalMesh(name));
    scene.deleteVisual(visual);

    ASSERT_EQ(manager.getMesh(name), registered) << "not the one that it drew";
    EXPECT_TRUE(manager.hasGlobalMesh(name));
    manager.deleteMesh(registered);
}

TEST_F(MeshVisualTest, RegisteredMeshEndsWithItsVisual)
{
    const std::string file = writeTriangle("ends.stl");
    MeshVisual* visual = buildStl(file);

    scene.deleteVisual(visual);

    EXPECT_FALSE(MeshManager::Get()->hasMesh(file));
}

TEST_F(MeshVisualTest, FirstThatDiesEndsTheMeshAndTheOthersKeepWhatTheyDraw)
{
    const std::string file = writeTriangle("shared-end.stl");
    MeshVisual* first = buildStl(file);
    MeshVisual* second = buildStl(file);

    scene.deleteVisual(first);
    EXPECT_FALSE(MeshManager::Get()->hasMesh(file));
    // Takes the room of what was freed.
    const std::vector<Mesh> others(8, Mesh("another mesh"));

    EXPECT_EQ(second->getMeshName(), file);
    EXPECT_EQ(second->getMesh()->vertices.size(), 3u);
    EXPECT_EQ(second->getTrianglesNum(), 1u);
    selection::VisualSelection& picking = *selection::VisualSelection::Get();
    picking.update();
    EXPECT_EQ(picking.select(Ray({0.2f, 0.2f, 10}, {0, 0, -1})).visual, second);
}

TEST_F(MeshVisualTest, LaterMeshOfTheNameIsLeftToThoseWhoDrawIt)
{
    const std::string file = writeTriangle("read-again.stl");
    MeshVisual* first = buildStl(file);
    MeshVisual* second = buildStl(file);
    scene.deleteVisual(first);
    const MeshVisual* third = buildStl(file);
    ASSERT_NE(third->getMesh(), second->getMesh());

    scene.deleteVisual(second);

    EXPECT_EQ(MeshManager::Get()->getMesh(file), third->getMesh());
    EXPECT_EQ(third->getMeshName(), file);
}

TEST_F(MeshVisualTest, CopyOutlivesItsSource)
{
    const std::string file = writeTriangle("outlived.stl");
    MeshVisual* visual = buildStl(file);
    auto* copy = static_cast<MeshVisual*>(visual->copy(world).value());

    scene.deleteVisual(visual);
    const std::vector<Mesh> others(8, Mesh("another mesh"));

    EXPECT_EQ(copy->getMeshName(), file);
    EXPECT_EQ(copy->getTrianglesNum(), 1u);
    delete copy;
}

TEST_F(MeshVisualTest, NameThatIsNeitherKnownNorStlFails)
{
    auto* visual = new MeshVisual("unknown", world);

    EXPECT_THAT([&] { visual->attachMesh("no such mesh"); }, test::throwsExactly<std::runtime_error>("Not stl file"));
}

TEST_F(MeshVisualTest, ColourIsItsOwnEvenWhereTheMeshIsShared)
{
    const std::string file = writeTriangle("shared.stl");
    MeshVisual* first = buildStl(file, "#FF0000");
    MeshVisual* second = buildStl(file, "#0000FF");

    first->setBodyColor({0, 1, 0}, 0.5f);

    EXPECT_EQ(colorOf(*first), Ogre::Vector4(0, 1, 0, 0.5f));
    EXPECT_EQ(colorOf(*second), Ogre::Vector4(0, 0, 1, 1));
    first->resetColor();
    EXPECT_EQ(colorOf(*first), Ogre::Vector4(1, 0, 0, 1));
}

TEST_F(MeshVisualTest, MalformedColourTextPassesOutAndChangesNothing)
{
    MeshVisual* visual = buildStl(writeTriangle("malformed.stl"), "#FF0000");

    EXPECT_THAT([&] { visual->setColor(std::string("#F")); }, testing::Throws<std::out_of_range>());
    EXPECT_THAT([&] { visual->setColor(std::string("#XYZ123")); },
                test::throwsExactly<std::invalid_argument>("invalid stoi argument"));

    EXPECT_EQ(colorOf(*visual), Ogre::Vector4(1, 0, 0, 1));
}

TEST_F(MeshVisualTest, CopyIsSeeThroughAndLeavesTheMesh)
{
    const std::string file = writeTriangle("copied.stl");
    MeshVisual* visual = buildStl(file);
    visual->setPosition(1, 2, 3);

    auto* copy = static_cast<MeshVisual*>(visual->copy(world).value());

    EXPECT_TRUE(copy->isCopied());
    EXPECT_EQ(copy->getPose(), visual->getPose());
    EXPECT_EQ(copy->getId(), visual->getId());
    EXPECT_THAT(copy->getName(), testing::StartsWith(visual->getName()));
    EXPECT_EQ(copy->getMesh(), visual->getMesh());
    for (void (Visual::*state)() : {&Visual::resetAppearance, &Visual::setSelected, &Visual::setHighlighted}) {
        (copy->*state)();
        EXPECT_EQ(copy->getEntity()->getSubEntity(0)->getMaterialName(), "TransBody");
    }
    delete copy;
    EXPECT_TRUE(MeshManager::Get()->hasMesh(file));
}

} // namespace
} // namespace vrk::visual
