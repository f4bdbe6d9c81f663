#include "visual/SolidVisual.h"

#include "mesh/MeshManager.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "visual/RenderGroups.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <Ogre.h>
#include <Standard_OutOfRange.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

namespace vrk::visual {
namespace {

using testing::HasSubstr;
using testing::StrEq;

class SolidVisualTest : public test::SceneFixture {
protected:
    selection::VisualSelection& picking = *selection::VisualSelection::Get();

    SolidVisual* buildBody(const std::string& uri, const std::string& color = "#808080",
                           const TopoDS_Shape& shape = test::meshedBox(10, 20, 30))
    {
        const auto body = test::addModelBody(shape, uri, color);
        SolidVisual::Build(world, body.get(), shape);
        return static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    }
    static rob::Colorf bufferColor(const SolidVisual& solid, unsigned face)
    {
        return MeshManager::GetFaceColor(solid.getCurrentMeshName(), solid.getShape(), face);
    }
    static bool hasMesh(const std::string& name)
    {
        return Ogre::MeshManager::getSingleton().resourceExists(
            name, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
    }
};

void expectColor(const rob::Colorf& actual, float r, float g, float b)
{
    EXPECT_NEAR(actual.r, r, 1e-6);
    EXPECT_NEAR(actual.g, g, 1e-6);
    EXPECT_NEAR(actual.b, b, 1e-6);
}

TEST_F(SolidVisualTest, BodyIsRegisteredPickableAndInItsMaterials)
{
    SolidVisual* solid = buildBody("registered");

    EXPECT_EQ(solid->getType(), VisualType::Solid);
    EXPECT_EQ(Scene::GetVisual(solid->getId()), solid);
    EXPECT_TRUE(picking.hasVisual(solid));
    EXPECT_EQ(solid->getMeshName(), "registered");
    EXPECT_EQ(solid->getEntity()->getSubEntity(0)->getMaterialName(), "Body");
    EXPECT_EQ(solid->getEntity()->getName(), solid->getName());
    solid->setSelected();
    EXPECT_EQ(solid->getEntity()->getSubEntity(0)->getMaterialName(), "BodySelected");
    solid->setHighlighted();
    EXPECT_EQ(solid->getEntity()->getSubEntity(0)->getMaterialName(), "BodyHighlighted");
}

TEST_F(SolidVisualTest, MaterialOfTheModelNamesAllThreeLooks)
{
    const TopoDS_Shape shape = test::meshedBox(1, 1, 1);
    const auto body = test::addModelBody(shape, "of-a-maker");
    body->setMaterialName("KUKA");

    SolidVisual::Build(world, body.get(), shape);

    auto* solid = static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    EXPECT_EQ(solid->getEntity()->getSubEntity(0)->getMaterialName(), "KUKA");
    solid->setSelected();
    EXPECT_EQ(solid->getEntity()->getSubEntity(0)->getMaterialName(), "KUKASelected");
}

TEST_F(SolidVisualTest, DetectableIsThatOfThePart)
{
    const TopoDS_Shape shape = test::meshedBox(1, 1, 1);
    const auto body = test::addModelBody(shape, "detectable");
    auto* part = static_cast<layout::Part*>(sdf::SdfManager::inst().find(body->getParentId()));
    part->setDetectable(false);

    SolidVisual::Build(world, body.get(), shape);

    EXPECT_FALSE(picking.isDetectable(Scene::GetVisual(body->getId())));
    EXPECT_TRUE(picking.isDetectable(buildBody("detectable-by-default")));
}

TEST_F(SolidVisualTest, BareShapeIsRedAndInOneMaterial)
{
    SolidVisual* solid = SolidVisual::Build(world, test::meshedBox(1, 1, 1), "KUKA");

    expectColor(bufferColor(*solid, 1), 0xED / 255.0f, 0x1C / 255.0f, 0x24 / 255.0f);
    EXPECT_EQ(Scene::GetVisual(solid->getId()), solid);
    EXPECT_FALSE(picking.hasVisual(solid));
    EXPECT_EQ(solid->getMeshName(), solid->getName());
    const Ogre::SubEntity* drawn = solid->getEntity()->getSubEntity(0);
    EXPECT_EQ(drawn->getMaterialName(), "KUKA");
    solid->showMaterial("FANUC");
    solid->setSelected();
    solid->setHighlighted();
    EXPECT_EQ(drawn->getMaterialName(), "FANUC") << "the two states have no material";
}

TEST_F(SolidVisualTest, BodyTakesTheShapeThatItIsShownWith)
{
    const auto body = test::addModelBody(test::meshedBox(1, 1, 1), "takes-shape");
    const TopoDS_Shape shown = test::meshedBox(10, 20, 30);

    SolidVisual::Build(world, body.get(), shown);

    EXPECT_TRUE(body->getShape().IsEqual(shown));
    const auto& solid = static_cast<SolidVisual&>(*Scene::GetVisual(body->getId()));
    EXPECT_TRUE(solid.getShape().IsEqual(shown));
    EXPECT_EQ(solid.getEntity()->getBoundingBox().getMaximum(), Ogre::Vector3(10, 20, 30));
}

TEST_F(SolidVisualTest, BareShapeWithThreeMaterialsCanBePicked)
{
    SolidVisual::Build(world, test::meshedBox(1, 1, 1), "Body", "BodySelected", "BodyHighlighted");

    const VisualChildren children = world->getChildren();
    Visual* last = nullptr;
    for (Visual* child : children)
        last = child;
    auto* solid = static_cast<SolidVisual*>(last);
    EXPECT_EQ(Scene::GetVisual(solid->getId()), solid);
    EXPECT_TRUE(picking.hasVisual(solid));
    EXPECT_FALSE(picking.isDetectable(solid));
    expectColor(bufferColor(*solid, 1), 0xED / 255.0f, 0x1C / 255.0f, 0x24 / 255.0f);
    solid->setHighlighted();
    EXPECT_EQ(solid->getEntity()->getSubEntity(0)->getMaterialName(), "BodyHighlighted");
    solid->setSelected();
    EXPECT_EQ(solid->getEntity()->getSubEntity(0)->getMaterialName(), "BodySelected");
}

TEST_F(SolidVisualTest, BodyWithoutTrianglesStaysWithoutEntityAndSaysSo)
{
    testing::internal::CaptureStdout();
    SolidVisual* solid = buildBody("untriangulated", "#808080", BRepPrimAPI_MakeBox(1, 1, 1).Shape());

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "no mesh: " + solid->getName() + "\n");
    EXPECT_TRUE(solid->hasNoEntity());
    EXPECT_EQ(solid->getBodiesNum(), 0u);
    EXPECT_EQ(solid->getTrianglesNum(), 0u);
    EXPECT_EQ(solid->getVerticesNum(), 0u);
    EXPECT_FALSE(picking.hasVisual(solid));
}

TEST_F(SolidVisualTest, BareShapeWithoutTrianglesIsSilent)
{
    testing::internal::CaptureStdout();
    SolidVisual* solid = SolidVisual::Build(world, BRepPrimAPI_MakeBox(1, 1, 1).Shape(), "Body");

    EXPECT_TRUE(testing::internal::GetCapturedStdout().empty());
    EXPECT_TRUE(solid->hasNoEntity());
}

TEST_F(SolidVisualTest, BareShapeWithoutTrianglesIsKnownToPickingAllTheSame)
{
    testing::internal::CaptureStdout();
    SolidVisual::Build(world, BRepPrimAPI_MakeBox(1, 1, 1).Shape(), "Body", "BodySelected", "BodyHighlighted");

    EXPECT_TRUE(testing::internal::GetCapturedStdout().empty());
    Visual* last = nullptr;
    for (Visual* child : world->getChildren())
        last = child;
    auto* solid = dynamic_cast<SolidVisual*>(last);
    ASSERT_NE(solid, nullptr);
    EXPECT_TRUE(solid->hasNoEntity());
    EXPECT_TRUE(picking.hasVisual(solid));
    picking.update();
    EXPECT_FALSE(picking.select(Ray({0.5f, 0.5f, 10}, {0, 0, -1})).hit);
}

TEST_F(SolidVisualTest, OperationsWithoutEntityDoNothing)
{
    SolidVisual* solid = SolidVisual::Build(world, TopoDS_Shape(), "Body");

    EXPECT_EQ(solid->getFacesNum(), 0u);
    EXPECT_NO_THROW(solid->resetColor());
    EXPECT_NO_THROW(solid->setBodyColor({1, 0, 0}, 1));
    EXPECT_NO_THROW(solid->setFaceColor(1, rob::Colorf(1, 0, 0)));
}

TEST_F(SolidVisualTest, CountsAreThoseOfTheMesh)
{
    SolidVisual* solid = buildBody("counts");

    EXPECT_EQ(solid->getBodiesNum(), 1u);
    EXPECT_EQ(solid->getFacesNum(), 6u);
    EXPECT_EQ(solid->getTrianglesNum(), 12u);
    EXPECT_EQ(solid->getVerticesNum(), 24u);
}

TEST_F(SolidVisualTest, CountsAreSumsOverThePartsOfTheMesh)
{
    const Ogre::MeshPtr mesh = Ogre::MeshManager::getSingleton().createManual(
        "mesh of two parts", Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
    for (const unsigned triangles : {1u, 2u}) {
        Ogre::SubMesh* part = mesh->createSubMesh();
        part->useSharedVertices = false;
        part->vertexData = new Ogre::VertexData;
        part->vertexData->vertexCount = 4 * triangles;
        part->indexData->indexCount = 3 * triangles;
    }
    mesh->_setBounds(Ogre::AxisAlignedBox(0, 0, 0, 1, 1, 1));
    auto* solid = new SolidVisual("solid of two parts", TopoDS_Shape(), world);

    solid->attachEntity("mesh of two parts");

    EXPECT_EQ(solid->getMeshName(), "mesh of two parts");
    EXPECT_EQ(solid->getEntity()->getName(), std::to_string(solid->getId()) + "mesh of two parts");
    EXPECT_EQ(solid->getTrianglesNum(), 3u);
    EXPECT_EQ(solid->getVerticesNum(), 12u);
    EXPECT_EQ(solid->getBodiesNum(), 1u);
}

TEST_F(SolidVisualTest, HidingFacesNamesThemInTheirOrder)
{
    SolidVisual* solid = buildBody("order");

    solid->setFaceVisible(3, false);
    solid->setFaceVisible(5, false);
    EXPECT_EQ(solid->getCurrentMeshName(), "order_3_5");
    EXPECT_EQ(solid->getTrianglesNum(), 8u);

    solid->setFaceVisible(3, true);
    EXPECT_EQ(solid->getCurrentMeshName(), "order_5");
    solid->setFaceVisible(3, false);
    EXPECT_EQ(solid->getCurrentMeshName(), "order_5_3");
    EXPECT_EQ(solid->getMeshName(), "order");
}

TEST_F(SolidVisualTest, HidingAFaceTwiceNamesItOnce)
{
    SolidVisual* solid = buildBody("twice");

    solid->setFaceVisible(2, false);
    solid->setFaceVisible(2, false);

    EXPECT_EQ(solid->getCurrentMeshName(), "twice_2");
    EXPECT_FALSE(solid->isFaceVisible(2));
    EXPECT_TRUE(solid->isFaceVisible(3));
    EXPECT_TRUE(solid->isFaceVisible(std::uint64_t{1} << 32 | 2)) << "it does not fit a face number";
}

TEST_F(SolidVisualTest, ShowingTheSolidShowsItsHiddenFacesAndRegistersThemAnew)
{
    SolidVisual* solid = buildBody("shown");
    solid->setFaceVisible(1, false);
    picking.setDetectable(solid, true);
    picking.disableObject(solid);

    solid->setVisible(true, true);

    EXPECT_EQ(solid->getCurrentMeshName(), "shown");
    EXPECT_EQ(solid->getTrianglesNum(), 12u);
    EXPECT_TRUE(picking.isDetectable(solid)) << "kept";
    EXPECT_TRUE(picking.isEnabled(solid)) << "back at its default";
}

TEST_F(SolidVisualTest, ShowingASolidThatCannotBePickedLeavesItSo)
{
    SolidVisual* solid = SolidVisual::Build(world, test::meshedBox(1, 1, 1), "Body");
    solid->setFaceVisible(1, false);

    EXPECT_NO_THROW(solid->setVisible(true, true));

    EXPECT_EQ(solid->getTrianglesNum(), 12u);
    EXPECT_FALSE(picking.hasVisual(solid));
}

TEST_F(SolidVisualTest, HidingAFaceIsNotToldToPicking)
{
    SolidVisual* solid = buildBody("picking-not-told");
    picking.disableObject(solid);

    solid->setFaceVisible(1, false);
    solid->setFaceVisible(1, true);

    EXPECT_FALSE(picking.isEnabled(solid)) << "registered anew it would be back at its default";
}

TEST_F(SolidVisualTest, NewMeshIsDrawnUnderTheNameOfTheVisual)
{
    SolidVisual* solid = buildBody("named-entity");

    solid->setFaceVisible(1, false);

    EXPECT_EQ(solid->getEntity()->getName(), solid->getName());
    EXPECT_EQ(solid->getEntity()->getMesh()->getName(), "named-entity_1");
    EXPECT_EQ(solid->getSceneNode()->getAttachedObjects().size(), 1u) << "the one before is gone";
}

TEST_F(SolidVisualTest, BodyColourReachesWhatIsShownNow)
{
    SolidVisual* solid = buildBody("colour-shown", "#808080");
    solid->setFaceVisible(6, false); // the last: the colours of the others are read where they are written

    solid->setBodyColor({0.25f, 0.5f, 0.75f}, 1);
    expectColor(bufferColor(*solid, 1), 0.25f, 0.5f, 0.75f);
    expectColor(MeshManager::GetFaceColor("colour-shown", solid->getShape(), 1), 0x80 / 255.0f, 0x80 / 255.0f,
                0x80 / 255.0f);

    solid->resetColor();
    expectColor(bufferColor(*solid, 1), 0x80 / 255.0f, 0x80 / 255.0f, 0x80 / 255.0f);
}

TEST_F(SolidVisualTest, HidingTheSolidHidesItsEdgesAndLeavesWhatKeepsItsOwnState)
{
    SolidVisual* solid = buildBody("hides-below");
    auto* frame = new Visual("Local Frame", solid);
    auto* attached = new Visual(solid);
    attached->setAttachState(true);
    auto* plain = new Visual(solid);

    solid->setVisible(false, false);
    EXPECT_FALSE(solid->isVisible());
    EXPECT_FALSE(solid->getEntity()->getVisible());
    EXPECT_TRUE(plain->isVisible());

    solid->setVisible(false, true);
    EXPECT_FALSE(plain->isVisible());
    EXPECT_TRUE(frame->isVisible());
    EXPECT_TRUE(attached->isVisible());
}

TEST_F(SolidVisualTest, MeshesOfHiddenFacesStayForTheNextTime)
{
    SolidVisual* solid = buildBody("variants");
    solid->setFaceVisible(2, false);
    solid->setFaceVisible(2, true);
    EXPECT_TRUE(hasMesh("variants_2"));

    scene.deleteVisual(solid);

    EXPECT_TRUE(hasMesh("variants_2")) << "a solid gives back its whole mesh alone";
}

TEST_F(SolidVisualTest, SolidIsOneUserOfItsWholeMeshHoweverOftenItReturnsToIt)
{
    SolidVisual* solid = buildBody("drift");
    SolidVisual* other = buildBody("drift");
    for (int i = 0; i < 3; ++i) {
        solid->setFaceVisible(2, false);
        solid->setFaceVisible(2, true);
    }

    scene.deleteVisual(solid);
    EXPECT_TRUE(hasMesh("drift")) << "the other draws it";

    scene.deleteVisual(other);
    EXPECT_FALSE(hasMesh("drift"));
}

TEST_F(SolidVisualTest, SolidThatDiesWithAllFacesHiddenGivesBackItsWholeMesh)
{
    SolidVisual* solid = buildBody("dies-hidden");
    for (unsigned face = 1; face <= 5; ++face)
        solid->setFaceVisible(face, false);
    EXPECT_THROW(solid->setFaceVisible(6, false), NoTriangleMesh);

    scene.deleteVisual(solid);

    EXPECT_FALSE(hasMesh("dies-hidden"));
}

TEST_F(SolidVisualTest, CopyThatHidesAndShowsAFaceLeavesTheCountAlone)
{
    SolidVisual* solid = buildBody("copied-drift");
    auto* copy = static_cast<SolidVisual*>(*solid->copy(nullptr));
    copy->setFaceVisible(2, false);
    copy->setFaceVisible(2, true);

    copy->clearCopiedChildren();
    delete copy;
    EXPECT_TRUE(hasMesh("copied-drift"));

    scene.deleteVisual(solid);
    EXPECT_FALSE(hasMesh("copied-drift"));
}

TEST_F(SolidVisualTest, FaceNumberPastTheLastIsRefusedAndNothingIsHidden)
{
    SolidVisual* solid = buildBody("six-faces");

    for (const std::uint64_t face : {std::uint64_t{7}, std::uint64_t{1} << 31, (std::uint64_t{1} << 32) + 1}) {
        EXPECT_THROW(solid->setFaceVisible(face, false), Standard_OutOfRange) << face;
        EXPECT_THROW(solid->checkFace(face), Standard_OutOfRange) << face;
    }

    EXPECT_EQ(solid->getCurrentMeshName(), "six-faces");
    EXPECT_EQ(solid->getTrianglesNum(), 12u);
}

TEST_F(SolidVisualTest, SolidThatDiesWithHiddenFacesGivesBackItsWholeMesh)
{
    SolidVisual* solid = buildBody("dies-partly-hidden");
    solid->setFaceVisible(2, false);

    scene.deleteVisual(solid);

    EXPECT_FALSE(hasMesh("dies-partly-hidden"));
    EXPECT_TRUE(hasMesh("dies-partly-hidden_2"));
}

TEST_F(SolidVisualTest, BodyWithoutTrianglesIsShownWithAFaceHidden)
{
    const TopoDS_Shape bare = BRepPrimAPI_MakeBox(10, 20, 30).Shape();
    SolidVisual* solid = buildBody("no-triangles", "#808080", bare);
    ASSERT_TRUE(solid->hasNoEntity());
    EXPECT_THROW(solid->setFaceVisible(1, false), NoTriangleMesh);
    bool isReached = false;

    scene.setDisplayMode(Scene::DisplayMode::Shaded);
    scene.addRenderTask([&isReached] { isReached = true; }, 0);
    EXPECT_NO_THROW(scene.processMsgs());

    EXPECT_TRUE(isReached);
    EXPECT_TRUE(solid->hasNoEntity());
    EXPECT_TRUE(solid->isFaceVisible(1));
}

TEST_F(SolidVisualTest, BodyThatNamesNoGeometryHasAMeshOfItsOwn)
{
    SolidVisual* small = buildBody("", "#808080", test::meshedBox(1, 1, 1));
    SolidVisual* large = buildBody("", "#808080", test::meshedBox(10, 10, 10));
    ASSERT_FALSE(small->hasNoEntity());
    ASSERT_FALSE(large->hasNoEntity());
    EXPECT_NE(small->getMeshName(), large->getMeshName());
    EXPECT_LT(small->getEntity()->getBoundingBox().getSize().x, 5);
    EXPECT_GT(large->getEntity()->getBoundingBox().getSize().x, 5);
    EXPECT_TRUE(picking.hasVisual(small));

    large->setFaceVisible(2, false);
    scene.selectBaseFace(large->getId(), 1);
    drain();
    EXPECT_EQ(large->getTrianglesNum(), 10u);

    const std::string name = small->getMeshName();
    scene.deleteVisual(small);
    EXPECT_FALSE(hasMesh(name));
}

TEST_F(SolidVisualTest, HidingTheSolidKeepsItsHiddenFaces)
{
    SolidVisual* solid = buildBody("stays-hidden");
    solid->setFaceVisible(1, false);

    solid->setVisible(false, true);

    EXPECT_EQ(solid->getCurrentMeshName(), "stays-hidden_1");
}

TEST_F(SolidVisualTest, HidingTheLastFaceFailsAndShowingOneMends)
{
    SolidVisual* solid = buildBody("last-face");
    for (unsigned face = 1; face <= 5; ++face)
        solid->setFaceVisible(face, false);

    EXPECT_THROW(solid->setFaceVisible(6, false), NoTriangleMesh);
    EXPECT_TRUE(solid->hasNoEntity());

    solid->setFaceVisible(4, true);
    EXPECT_FALSE(solid->hasNoEntity());
    EXPECT_EQ(solid->getTrianglesNum(), 2u);
}

TEST_F(SolidVisualTest, NewMeshKeepsVisibilityAndQueueGroup)
{
    SolidVisual* solid = buildBody("kept-state");
    solid->setSelected();
    solid->setVisible(false, false);

    solid->setFaceVisible(1, false);

    EXPECT_FALSE(solid->getEntity()->getVisible());
    EXPECT_EQ(solid->getEntity()->getRenderQueueGroup(), renderGroup::selected);
    EXPECT_EQ(solid->getEntity()->getSubEntity(0)->getMaterialName(), "Body") << "until the next refresh of its looks";
}

TEST_F(SolidVisualTest, HidingAFaceTakesItsHighlightAway)
{
    SolidVisual* solid = buildBody("no-highlight", "#808080");
    solid->highLightFace(2);

    solid->setFaceVisible(2, false);
    solid->setFaceVisible(2, true);

    expectColor(bufferColor(*solid, 2), 0x80 / 255.0f, 0x80 / 255.0f, 0x80 / 255.0f);
}

TEST_F(SolidVisualTest, SelectedSolidIsDrawnInTheGroupOfTheSelected)
{
    SolidVisual* solid = buildBody("group");

    solid->setSelected();
    EXPECT_EQ(solid->getEntity()->getRenderQueueGroup(), renderGroup::selected);

    solid->clearHighlightOrSelect();
    EXPECT_EQ(solid->getEntity()->getRenderQueueGroup(), renderGroup::normal);
}

TEST_F(SolidVisualTest, EverythingOnTheNodeOfASelectedSolidIsInItsGroup)
{
    SolidVisual* solid = buildBody("group-of-all");
    Ogre::ManualObject* mark = sceneManager->createManualObject("mark of a selected solid");
    solid->attachObject(mark);

    solid->setSelected();
    EXPECT_EQ(mark->getRenderQueueGroup(), renderGroup::selected);

    solid->clearHighlightOrSelect();
    EXPECT_EQ(mark->getRenderQueueGroup(), renderGroup::normal);
    EXPECT_EQ(solid->getEntity()->getSubEntity(0)->getMaterialName(), "Body");
    solid->detachObject(mark);
    sceneManager->destroyManualObject(mark);
}

TEST_F(SolidVisualTest, NamedMaterialIsShownUntilTheNextChangeOfLook)
{
    SolidVisual* solid = buildBody("named-material");

    solid->useNamedMaterial("KUKA");
    EXPECT_EQ(solid->getEntity()->getSubEntity(0)->getMaterialName(), "KUKA");

    solid->resetAppearance();
    EXPECT_EQ(solid->getEntity()->getSubEntity(0)->getMaterialName(), "Body");
}

TEST_F(SolidVisualTest, HighlightedFaceIsBrighterAndNotHeldToOne)
{
    SolidVisual* solid = buildBody("bright", "#E6E6E6"); // 0.9

    solid->highLightFace(3);

    expectColor(bufferColor(*solid, 3), 0xE6 / 255.0f + 0.2f, 0xE6 / 255.0f + 0.2f, 0xE6 / 255.0f + 0.2f);
    EXPECT_GT(bufferColor(*solid, 3).r, 1.09f);
    expectColor(bufferColor(*solid, 2), 0xE6 / 255.0f, 0xE6 / 255.0f, 0xE6 / 255.0f);
    solid->clearHighLightFace(3);
    expectColor(bufferColor(*solid, 3), 0xE6 / 255.0f, 0xE6 / 255.0f, 0xE6 / 255.0f);
}

TEST_F(SolidVisualTest, FaceColourIsTheStoredOneWhateverTheBufferHolds)
{
    SolidVisual* solid = buildBody("stored", "#808080");
    solid->setFaceColor(4, std::string("#10C279"));

    expectColor(solid->getFaceColor(4), 0x80 / 255.0f, 0x80 / 255.0f, 0x80 / 255.0f);
    expectColor(bufferColor(*solid, 4), 0x10 / 255.0f, 0xC2 / 255.0f, 0x79 / 255.0f);
    solid->clearSelectedFace(solid->getFace(4));
    expectColor(bufferColor(*solid, 4), 0x80 / 255.0f, 0x80 / 255.0f, 0x80 / 255.0f);
}

TEST_F(SolidVisualTest, MalformedColourTextPassesOut)
{
    SolidVisual* solid = buildBody("malformed");

    EXPECT_THAT([&] { solid->setFaceColor(1, std::string("#XYZ123")); },
                testing::ThrowsMessage<std::invalid_argument>(StrEq("invalid stoi argument")));
}

TEST_F(SolidVisualTest, BodyColourAndItsReset)
{
    SolidVisual* solid = buildBody("recoloured", "#808080");

    solid->setBodyColor({0.25f, 0.5f, 0.75f}, 0.1f);
    expectColor(bufferColor(*solid, 6), 0.25f, 0.5f, 0.75f);
    EXPECT_EQ(solid->getEntity()->getSubEntity(0)->getMaterialName(), "Body") << "opaque, whatever the alpha";

    solid->resetColor();
    expectColor(bufferColor(*solid, 6), 0x80 / 255.0f, 0x80 / 255.0f, 0x80 / 255.0f);
}

TEST_F(SolidVisualTest, SolidsOfOneUriShareTheirColours)
{
    const TopoDS_Shape shape = test::meshedBox(10, 20, 30);
    SolidVisual* first = buildBody("shared", "#808080", shape);
    SolidVisual* second = buildBody("shared", "#FF0000", shape);

    scene.selectBaseFace(first->getId(), 2);
    drain();

    expectColor(bufferColor(*second, 2), 0x10 / 255.0f, 0xC2 / 255.0f, 0x79 / 255.0f);
    expectColor(bufferColor(*second, 1), 0x80 / 255.0f, 0x80 / 255.0f, 0x80 / 255.0f);
}

TEST_F(SolidVisualTest, SharedMeshGoesWithItsLastSolid)
{
    const TopoDS_Shape shape = test::meshedBox(10, 20, 30);
    SolidVisual* first = buildBody("counted-users", "#808080", shape);
    SolidVisual* second = buildBody("counted-users", "#808080", shape);

    scene.deleteVisual(first);
    EXPECT_TRUE(hasMesh("counted-users"));

    scene.deleteVisual(second);
    EXPECT_FALSE(hasMesh("counted-users"));
}

TEST_F(SolidVisualTest, FacesAreKnownByTheirNumbers)
{
    SolidVisual* solid = buildBody("numbers");
    const TopoDS_Face third = solid->getFace(3);

    EXPECT_EQ(solid->getFaceIndex(third), 3u);
    EXPECT_EQ(solid->getFaceIndex(TopoDS::Face(TopExp_Explorer(test::meshedBox(1, 1, 1), TopAbs_FACE).Current())), 0u);
    EXPECT_THROW(solid->getFace(7), Standard_OutOfRange);
}

TEST_F(SolidVisualTest, CopySharesTheMeshAndLeavesItAlone)
{
    SolidVisual* solid = buildBody("copied");
    solid->setPosition(1, 2, 3);

    auto* copy = static_cast<SolidVisual*>(solid->copy(world).value());

    EXPECT_TRUE(copy->isCopied());
    EXPECT_EQ(copy->getId(), solid->getId());
    EXPECT_THAT(copy->getName(), testing::StartsWith(solid->getName()));
    EXPECT_EQ(copy->getMeshName(), "copied");
    EXPECT_EQ(copy->getPose(), solid->getPose());
    EXPECT_EQ(copy->getTrianglesNum(), 12u);
    const Ogre::SubEntity* drawn = copy->getEntity()->getSubEntity(0);
    for (void (Visual::*state)() : {&Visual::resetAppearance, &Visual::setSelected, &Visual::setHighlighted}) {
        (copy->*state)();
        EXPECT_EQ(drawn->getMaterialName(), "TransBody");
    }
    delete copy;
    EXPECT_TRUE(hasMesh("copied"));
}

TEST_F(SolidVisualTest, CopiesAreBuiltUnderIdsOfTheirOwn)
{
    SolidVisual* solid = buildBody("copied-twice");
    const auto ownNumber = [label = solid->getName()](const Visual& copy) {
        EXPECT_TRUE(copy.getName().starts_with(label)) << copy.getName();
        return copy.getName().substr(label.size());
    };

    auto* first = static_cast<SolidVisual*>(solid->copy(world).value());
    auto* second = static_cast<SolidVisual*>(solid->copy(world).value());

    EXPECT_EQ(first->getEntity()->getName(), ownNumber(*first) + "copied-twice");
    EXPECT_EQ(second->getEntity()->getName(), ownNumber(*second) + "copied-twice");
    EXPECT_NE(ownNumber(*first), ownNumber(*second));
    EXPECT_EQ(first->getId(), second->getId()) << "that of the solid, in the end";
    EXPECT_EQ(Scene::GetVisual(solid->getId()), solid) << "they stand in no registry";
    delete first;
    delete second;
}

TEST_F(SolidVisualTest, CopyIsShownWithTheChildrenThatCanBeCopied)
{
    SolidVisual* solid = buildBody("copied-with-children");
    auto* frame = new Visual(solid);
    frame->setType(VisualType::Frame);
    frame->setPosition(4, 5, 6);
    (new Visual(solid))->setType(VisualType::Point);
    solid->setVisible(false, false);

    auto* copy = static_cast<SolidVisual*>(solid->copy(world).value());

    EXPECT_TRUE(copy->isVisible());
    EXPECT_TRUE(copy->getEntity()->getVisible());
    const std::vector<Visual*> children(copy->getChildren().begin(), copy->getChildren().end());
    ASSERT_EQ(children.size(), 1u);
    EXPECT_EQ(children[0]->getId(), frame->getId());
    EXPECT_EQ(children[0]->getPosition(), rob::Posf(4, 5, 6));
    copy->clearCopiedChildren();
    delete copy;
}

TEST_F(SolidVisualTest, CopyOfASolidWithHiddenFacesShowsAllOfThem)
{
    SolidVisual* solid = buildBody("copied-partly-hidden");
    solid->setFaceVisible(1, false);

    auto* copy = static_cast<SolidVisual*>(solid->copy(world).value());

    EXPECT_EQ(copy->getTrianglesNum(), 12u);
    EXPECT_TRUE(copy->isFaceVisible(1));
    delete copy;
}

TEST_F(SolidVisualTest, CopyOfASolidWithoutEntityHasNone)
{
    SolidVisual* solid = SolidVisual::Build(world, TopoDS_Shape(), "Body");

    auto* copy = static_cast<SolidVisual*>(solid->copy(nullptr).value());

    EXPECT_TRUE(copy->hasNoEntity());
    delete copy;
}

} // namespace
} // namespace vrk::visual
