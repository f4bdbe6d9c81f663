#include "visual/PointCloudVisual.h"

#include "CloudVisualFixture.h"

#include <limits>

namespace vrk::visual {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::StrEq;

using Indices = std::vector<std::uint64_t>;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinite = std::numeric_limits<float>::infinity();

using PointCloudVisualTest = CloudVisualFixture;

TEST_F(PointCloudVisualTest, AddedCloudIsBuiltUnderTheWorldInTheNextBatch)
{
    const auto node = test::addModelCloud(fivePoints);
    scene.addPointCloud(node.get());
    EXPECT_FALSE(Scene::HasVisual(node->getId()));

    drain();

    const auto& cloud = dynamic_cast<const PointCloudVisual&>(*Scene::GetVisual(node->getId()));
    EXPECT_EQ(cloud.getParent(), world);
    EXPECT_EQ(cloud.getType(), VisualType::PointCloud);
    EXPECT_EQ(&cloud.getPoints(), &node->getPoints());
}

TEST_F(PointCloudVisualTest, IsDrawnAndRegisteredAsSoonAsItIsBuilt)
{
    PointCloudVisual* cloud = build(fivePoints);

    EXPECT_THAT(materialsOf(*cloud), ElementsAre("PointCloud"));
    EXPECT_THAT(drawnBy(*cloud, 0), ElementsAreArray(fivePoints));
    EXPECT_TRUE(service().isEnabled(cloud));
    EXPECT_FALSE(service().isDetectable(cloud));
    EXPECT_EQ(objectOf(*cloud).getRenderQueueGroup(), 50);
}

TEST_F(PointCloudVisualTest, StandsAtThePoseOfItsNode)
{
    const auto node = test::addModelCloud(fivePoints);
    node->setPose(rob::Posed(rob::Posd(10, 20, 30)));

    const Visual* cloud = PointCloudVisual::Build(world, node.get());

    EXPECT_EQ(cloud->getPosition(), rob::Posf(10, 20, 30));
}

TEST_F(PointCloudVisualTest, MaterialIsToldTheBoundingBox)
{
    PointCloudVisual* cloud = build(fivePoints);

    const Section& section = *objectOf(*cloud).getSections()[0];
    EXPECT_EQ(section.getCustomParameter(1), Ogre::Vector4(0, 0, 0, 1));
    EXPECT_EQ(section.getCustomParameter(2), Ogre::Vector4(4, 4, 10, 1));
    const Box box = cloud->getBoundingBox();
    EXPECT_EQ(box.min, rob::Posf(0, 0, 0));
    EXPECT_EQ(box.max, rob::Posf(4, 4, 10));
}

TEST_F(PointCloudVisualTest, EmptyCloudDrawsNothingAndIsNotRegisteredForPicking)
{
    PointCloudVisual* cloud = build({});

    EXPECT_THAT(objectOf(*cloud).getSections(), IsEmpty());
    EXPECT_FALSE(service().hasVisual(cloud));
    EXPECT_TRUE(Scene::HasVisual(cloud->getId()));
    EXPECT_FALSE(cloud->getBoundingBox().isValid());
    cloud->setSelectedIndices({0, 1});
    cloud->resetAppearance();
    EXPECT_FALSE(service().hasVisual(cloud));
}

TEST_F(PointCloudVisualTest, NormalsOfEveryPointSelectThePhongMaterials)
{
    PointCloudVisual* cloud = build(fivePoints, fiveNormals);
    cloud->setSelectedIndices({1});

    EXPECT_TRUE(cloud->hasNormals());
    EXPECT_THAT(materialsOf(*cloud), ElementsAre("PointCloudPhong", "PointCloudPhongSelected"));
    for (Section* section : objectOf(*cloud).getSections())
        EXPECT_NE(section->getRenderOperation()->vertexData->vertexDeclaration->findElementBySemantic(Ogre::VES_NORMAL),
                  nullptr);
    EXPECT_THAT(normalsOf(*objectOf(*cloud).getSections()[0]),
                ElementsAre(fiveNormals[0], fiveNormals[2], fiveNormals[3], fiveNormals[4]));
    EXPECT_THAT(normalsOf(*objectOf(*cloud).getSections()[1]), ElementsAre(fiveNormals[1]));
}

TEST_F(PointCloudVisualTest, ColoursOfThePointsAreShownUnlessHeightsAreWanted)
{
    for (const bool withNormals : {false, true}) {
        PointCloudVisual* cloud = buildColored(withNormals);
        EXPECT_FALSE(cloud->areHeightsShown());
        EXPECT_THAT(materialsOf(*cloud), ElementsAre(withNormals ? "PointCloudPhongColored" : "PointCloudColored"));
        EXPECT_NE(objectOf(*cloud)
                      .getSections()[0]
                      ->getRenderOperation()
                      ->vertexData->vertexDeclaration->findElementBySemantic(Ogre::VES_DIFFUSE),
                  nullptr);

        cloud->showHeights(true);
        EXPECT_TRUE(cloud->areHeightsShown());
        EXPECT_THAT(materialsOf(*cloud), ElementsAre(withNormals ? "PointCloudPhong" : "PointCloud"));
        cloud->setSelectedIndices({1});
        EXPECT_THAT(materialsOf(*cloud), withNormals ? ElementsAre("PointCloudPhong", "PointCloudPhongSelected")
                                                     : ElementsAre("PointCloud", "PointCloudSelected"))
            << "stays through a rebuild";

        cloud->showHeights(false);
        cloud->resetAppearance();
        EXPECT_THAT(materialsOf(*cloud), ElementsAre(withNormals ? "PointCloudPhongColored" : "PointCloudColored"));
    }
}

TEST_F(PointCloudVisualTest, SwitchOfColoursLeavesSelectionAndHiddenPoints)
{
    PointCloudVisual* cloud = buildColored(false);
    cloud->markPoints({0, 2});

    cloud->showHeights(true);

    EXPECT_THAT(materialsOf(*cloud), ElementsAre("PointCloud", "PointCloudSelected"));
    EXPECT_THAT(cloud->getMarkedPoints(), ElementsAre(0, 2));
    cloud->setUnselectedVisible(false);
    cloud->setSelectedIndices({0, 1, 2, 3, 4});
    cloud->showHeights(false); // there is no section of others
    EXPECT_THAT(materialsOf(*cloud), ElementsAre("PointCloudSelected"));
}

TEST_F(PointCloudVisualTest, ColoursOfAnotherNumberCountAsNone)
{
    const auto node = test::addModelCloud(fivePoints, {}, layout::PointCloud::Colors(4));
    const auto* cloud = static_cast<PointCloudVisual*>(PointCloudVisual::Build(world, node.get()));

    EXPECT_FALSE(cloud->hasColors());
    EXPECT_TRUE(cloud->areHeightsShown());
    EXPECT_THAT(materialsOf(*cloud), ElementsAre("PointCloud"));
}

TEST_F(PointCloudVisualTest, NormalsOfAnotherNumberSelectThePlainMaterials)
{
    for (const std::size_t count : {std::size_t{0}, std::size_t{4}, std::size_t{6}}) {
        layout::PointCloud::Normals normals(count, rob::Vec3f(0, 0, 1));
        PointCloudVisual* cloud = build(fivePoints, normals);
        cloud->setSelectedIndices({1});

        EXPECT_FALSE(cloud->hasNormals());
        EXPECT_THAT(materialsOf(*cloud), ElementsAre("PointCloud", "PointCloudSelected")) << count << " normals";
        EXPECT_EQ(objectOf(*cloud)
                      .getSections()[0]
                      ->getRenderOperation()
                      ->vertexData->vertexDeclaration->findElementBySemantic(Ogre::VES_NORMAL),
                  nullptr);
    }
}

TEST_F(PointCloudVisualTest, SelectedPointsAreASectionOfTheirOwnInTheOrderGiven)
{
    PointCloudVisual* cloud = build(fivePoints);

    cloud->setSelectedIndices({3, 0});

    EXPECT_THAT(drawnBy(*cloud, 0), ElementsAre(fivePoints[1], fivePoints[2], fivePoints[4]));
    EXPECT_THAT(drawnBy(*cloud, 1), ElementsAre(fivePoints[3], fivePoints[0]));
    EXPECT_EQ(objectOf(*cloud).getSections()[1]->getCustomParameter(0), Ogre::Vector4(1, 1, 0, 1));
    EXPECT_THAT(cloud->getSelectedIndices(), ElementsAre(3, 0));
}

TEST_F(PointCloudVisualTest, SelectedPointsAreDrawnInTheSizeOfTheOthers)
{
    PointCloudVisual* cloud = build(fivePoints);

    cloud->setSelectedIndices({3, 0});

    const auto& sections = objectOf(*cloud).getSections();
    EXPECT_GT(sections[0]->getCustomParameter(3).x, 0);
    EXPECT_EQ(sections[0]->getCustomParameter(3), sections[1]->getCustomParameter(3));
}

TEST_F(PointCloudVisualTest, SameIndicesInAnotherOrderDoNothing)
{
    PointCloudVisual* cloud = build(fivePoints);
    cloud->setSelectedIndices({3, 0, 2});
    const Section* before = objectOf(*cloud).getSections()[1];
    service().update();

    cloud->setSelectedIndices({2, 3, 0, 3});

    EXPECT_EQ(objectOf(*cloud).getSections()[1], before);
    EXPECT_THAT(cloud->getSelectedIndices(), ElementsAre(3, 0, 2));
    EXPECT_FALSE(service().isDirty());
}

TEST_F(PointCloudVisualTest, OtherIndicesOfTheSameNumberReplaceTheSelection)
{
    PointCloudVisual* cloud = build(fivePoints);
    cloud->setSelectedIndices({3, 0});

    cloud->setSelectedIndices({3, 1});

    EXPECT_THAT(drawnBy(*cloud, 1), ElementsAre(fivePoints[3], fivePoints[1]));
}

TEST_F(PointCloudVisualTest, IndicesPastTheEndAreDropped)
{
    PointCloudVisual* cloud = build(fivePoints);

    cloud->setSelectedIndices({5, 4, std::numeric_limits<std::uint64_t>::max()});

    EXPECT_THAT(cloud->getSelectedIndices(), ElementsAre(4));
    EXPECT_EQ(drawnBy(*cloud, 0).size(), 4u);
    EXPECT_THAT(drawnBy(*cloud, 1), ElementsAre(fivePoints[4]));
}

TEST_F(PointCloudVisualTest, WhenAllPointsAreSelectedOnlyTheyAreDrawn)
{
    PointCloudVisual* cloud = build(fivePoints);

    cloud->setSelectedIndices({0, 1, 2, 3, 4});

    EXPECT_THAT(materialsOf(*cloud), ElementsAre("PointCloudSelected"));
    EXPECT_EQ(cloud->getBoundingBox().max, rob::Posf(4, 4, 10));
}

TEST_F(PointCloudVisualTest, UnselectedPointsAreHiddenFromTheNextUpdateOn)
{
    PointCloudVisual* cloud = build(fivePoints);
    cloud->setSelectedIndices({1, 3});

    cloud->setUnselectedVisible(false);
    EXPECT_THAT(materialsOf(*cloud), ElementsAre("PointCloud", "PointCloudSelected"));
    cloud->updateRenderPrimitive();
    EXPECT_THAT(materialsOf(*cloud), ElementsAre("PointCloudSelected"));

    cloud->setUnselectedVisible(true);
    cloud->updateRenderPrimitive();
    EXPECT_THAT(materialsOf(*cloud), ElementsAre("PointCloud", "PointCloudSelected"));
}

TEST_F(PointCloudVisualTest, WithoutASelectionHiddenUnselectedPointsAreDrawnAllTheSame)
{
    PointCloudVisual* cloud = build(fivePoints);

    cloud->setUnselectedVisible(false);
    cloud->updateRenderPrimitive();

    EXPECT_THAT(materialsOf(*cloud), ElementsAre("PointCloud"));
    EXPECT_EQ(drawnBy(*cloud, 0).size(), 5u);
}

TEST_F(PointCloudVisualTest, AnyChangeOfItsLookEmptiesTheSelection)
{
    PointCloudVisual* cloud = build(fivePoints);
    cloud->setSelectedIndices({1, 3});

    cloud->clearHighlightOrSelect();

    EXPECT_THAT(cloud->getSelectedIndices(), IsEmpty());
    EXPECT_THAT(materialsOf(*cloud), ElementsAre("PointCloud"));
}

TEST_F(PointCloudVisualTest, NamedMaterialIsTakenByEverySection)
{
    PointCloudVisual* cloud = build(fivePoints);
    cloud->setSelectedIndices({1, 3});
    cloud->setMaterial("", "PointBase", "no such material"); // naming them empties the selection
    cloud->setSelectedIndices({1, 3});

    cloud->setSelected();
    EXPECT_THAT(materialsOf(*cloud), ElementsAre("PointBase", "PointBase"));
    cloud->setHighlighted();
    EXPECT_THAT(materialsOf(*cloud), ElementsAre("PointBase", "PointBase"));
}

TEST_F(PointCloudVisualTest, RebuildKeepsAHiddenCloudHiddenAndUnpickable)
{
    PointCloudVisual* cloud = build(fivePoints);
    cloud->setVisible(false, true);

    cloud->setSelectedIndices({2});

    EXPECT_FALSE(objectOf(*cloud).getVisible());
    EXPECT_FALSE(service().isEnabled(cloud));
    cloud->setVisible(true, true);
    cloud->updateRenderPrimitive();
    EXPECT_TRUE(objectOf(*cloud).getVisible());
    EXPECT_TRUE(service().isEnabled(cloud));
}

TEST_F(PointCloudVisualTest, RebuildGivesWhatIsDrawnTheVisibilityOfTheVisual)
{
    PointCloudVisual* cloud = build(fivePoints);
    objectOf(*cloud).setVisible(false);

    cloud->updateRenderPrimitive();

    EXPECT_TRUE(objectOf(*cloud).getVisible());
}

TEST_F(PointCloudVisualTest, EachRebuildIsNewToThePickingService)
{
    PointCloudVisual* cloud = build(fivePoints);
    service().setDetectable(cloud, true);
    service().update();

    cloud->updateRenderPrimitive();

    EXPECT_TRUE(service().isDirty());
    EXPECT_FALSE(service().isDetectable(cloud));
}

TEST_F(PointCloudVisualTest, PointsThatAreNotFiniteAreNotDrawn)
{
    PointCloudVisual* cloud = build({{nan, 0, 0}, {1, 2, 3}, {0, infinite, 0}, {4, 5, 6}, {0, 0, -infinite}});

    cloud->setSelectedIndices({0, 3});

    EXPECT_THAT(drawnBy(*cloud, 0), ElementsAre(rob::Posf(1, 2, 3)));
    EXPECT_THAT(drawnBy(*cloud, 1), ElementsAre(rob::Posf(4, 5, 6)));
    EXPECT_EQ(cloud->getBoundingBox().min, rob::Posf(1, 2, 3));
    EXPECT_EQ(cloud->getBoundingBox().max, rob::Posf(4, 5, 6));
}

TEST_F(PointCloudVisualTest, PointsThatAreFartherOutThanAnyStationAreNotDrawn)
{
    const float largest = std::numeric_limits<float>::max();
    PointCloudVisual* cloud = build({{largest, 0, 0}, {1, 2, 3}, {0, -largest, 0}, {4, 5, 6}, {0, 0, 1e15f}});

    EXPECT_THAT(drawnBy(*cloud, 0), ElementsAre(rob::Posf(1, 2, 3), rob::Posf(4, 5, 6), rob::Posf(0, 0, 1e15f)));
}

TEST_F(PointCloudVisualTest, CloudOfNoFinitePointDrawsNothing)
{
    PointCloudVisual* cloud = build({{nan, nan, nan}, {infinite, 0, 0}});

    cloud->setSelectedIndices({1});

    EXPECT_THAT(objectOf(*cloud).getSections(), IsEmpty());
    EXPECT_FALSE(cloud->getBoundingBox().isValid());
}

TEST_F(PointCloudVisualTest, AllUnselectedPointsAreOneDrawCall)
{
    PointCloudVisual* cloud = build(test::scanOfBallOnFloor(200000).points);

    EXPECT_EQ(objectOf(*cloud).getSections().size(), 1u);
    EXPECT_EQ(drawnBy(*cloud, 0).size(), 200000u);
}

TEST_F(PointCloudVisualTest, DeletedCloudTakesItsObjectAndItsRegistrationAlong)
{
    PointCloudVisual* cloud = build(fivePoints);
    const unsigned id = cloud->getId();
    const std::string object = objectOf(*cloud).getName();

    scene.deleteVisual(cloud);

    EXPECT_FALSE(Scene::HasVisual(id));
    EXPECT_FALSE(service().hasVisual(cloud));
    EXPECT_FALSE(sceneManager->hasManualObject(object));
}

} // namespace
} // namespace vrk::visual
