#include "visual/PointVisual.h"

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "scene/core/OgreCompat.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "visual/PointsVisual.h"

#include <Ogre.h>

#include <limits>

namespace vrk::visual {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;
using testing::ThrowsMessage;

Ogre::ManualObject& objectOf(const Visual& visual)
{
    return dynamic_cast<Ogre::ManualObject&>(*visual.getSceneNode()->getAttachedObject(0));
}

class PointVisualTest : public test::SceneFixture {
protected:
    Visual* buildStationPoint()
    {
        auto node =
            std::make_shared<sdf::SdfNode>(sdf::ModelType::Unknown, sdf::SdfManager::inst().generateId(), "corner");
        node->setPose(rob::Posed(rob::Posd(10, 20, 30)));
        sdf::SdfManager::inst().add(node);
        return PointVisual::Build(world, node.get(), {1, 2, 3});
    }
    static Ogre::Vector4 colorOf(const Visual& visual)
    {
        return objectOf(visual).getSections()[0]->getCustomParameter(0);
    }
    static std::string materialOf(const Visual& visual) { return objectOf(visual).getSections()[0]->getMaterialName(); }
};

TEST_F(PointVisualTest, PreviewPointIsAmberAndNotRegistered)
{
    PointVisual* point = PointVisual::Build(0, 1, 2, 3);

    EXPECT_EQ(point->getType(), VisualType::Point);
    EXPECT_EQ(point->getParent(), world);
    EXPECT_EQ(point->getPntPos(), rob::Posf(1, 2, 3));
    EXPECT_EQ(materialOf(*point), "PointPreview");
    EXPECT_EQ(colorOf(*point), Ogre::Vector4(1, 0.843f, 0, 1));
    EXPECT_FALSE(Scene::HasVisual(point->getId()));
    EXPECT_FALSE(selection::VisualSelection::Get()->hasVisual(point));
}

TEST_F(PointVisualTest, PreviewPointHangsUnderTheVisualOfThatId)
{
    Visual* station = buildStationPoint();

    const PointVisual* byId = PointVisual::Build(station->getId(), 1, 2, 3);
    const Visual* byParent = PointVisual::Build(station, rob::Posf(4, 5, 6));

    EXPECT_EQ(byId->getParent(), station);
    EXPECT_EQ(byParent->getParent(), station);
    EXPECT_EQ(materialOf(*byParent), "PointPreview");
    EXPECT_EQ(dynamic_cast<const PointVisual&>(*byParent).getPntPos(), rob::Posf(4, 5, 6));
}

TEST_F(PointVisualTest, UnknownParentIdIsRefused)
{
    EXPECT_THAT([] { PointVisual::Build(4711, 1, 2, 3); },
                ThrowsMessage<std::out_of_range>(StrEq("invalid unordered_map<K, T> key")));
}

TEST_F(PointVisualTest, StationPointIsRegisteredAndCanBePicked)
{
    Visual* point = buildStationPoint();

    EXPECT_EQ(Scene::GetVisual(point->getId()), point);
    EXPECT_TRUE(selection::VisualSelection::Get()->isEnabled(point));
    EXPECT_FALSE(selection::VisualSelection::Get()->isDetectable(point));
    EXPECT_EQ(point->getPosition(), rob::Posf(10, 20, 30));
    EXPECT_EQ(materialOf(*point), "Point");
    EXPECT_EQ(objectOf(*point).getRenderQueueGroup(), 60);
    EXPECT_EQ(objectOf(*point).getSections()[0]->getRenderOperation()->operationType,
              Ogre::RenderOperation::OT_POINT_LIST);
}

TEST_F(PointVisualTest, EachStateHasItsMaterialAndItsColour)
{
    Visual* point = buildStationPoint();
    EXPECT_EQ(colorOf(*point), Ogre::Vector4(0.8f, 0.8f, 0.8f, 1));

    point->setHighlighted();
    EXPECT_EQ(materialOf(*point), "PointHighlighted");
    EXPECT_EQ(colorOf(*point), Ogre::Vector4(0.88f, 0.69f, 0.25f, 1));

    point->setSelected();
    EXPECT_EQ(materialOf(*point), "PointSelected");
    EXPECT_EQ(colorOf(*point), Ogre::Vector4(0, 0.184f, 0.655f, 1));

    point->clearHighlightOrSelect();
    EXPECT_EQ(materialOf(*point), "Point");
    EXPECT_EQ(colorOf(*point), Ogre::Vector4(0.8f, 0.8f, 0.8f, 1));
}

TEST_F(PointVisualTest, UnknownMaterialChangesNothing)
{
    Visual* point = buildStationPoint();

    point->setMaterial("no such material", "", "");

    EXPECT_EQ(materialOf(*point), "Point");
}

TEST_F(PointVisualTest, ColourIsSetWithItsAlpha)
{
    PointVisual* point = PointVisual::Build(0, 1, 2, 3);

    point->setColor({0.1f, 0.2f, 0.3f}, 0.4f);

    EXPECT_EQ(colorOf(*point), Ogre::Vector4(0.1f, 0.2f, 0.3f, 0.4f));
}

TEST_F(PointVisualTest, DeletedPointTakesItsObjectAndItsRegistrationAlong)
{
    Visual* point = buildStationPoint();
    const unsigned id = point->getId();
    const std::string object = objectOf(*point).getName();

    scene.deleteVisual(point);

    EXPECT_FALSE(Scene::HasVisual(id));
    EXPECT_FALSE(selection::VisualSelection::Get()->hasVisual(point));
    EXPECT_FALSE(sceneManager->hasManualObject(object));
}

TEST_F(PointVisualTest, SetOfPointsIsOneSectionOfThemAll)
{
    auto* points = new PointsVisual(world, {{1, 2, 3}, {4, 5, 6}});

    const Ogre::ManualObject& object = objectOf(*points);
    ASSERT_EQ(object.getSections().size(), 1u);
    EXPECT_EQ(materialOf(*points), "PointBase");
    EXPECT_EQ(object.getSections()[0]->getRenderOperation()->vertexData->vertexCount, 2u);
    EXPECT_EQ(toPos(object.getBoundingBox().getMaximum()), rob::Posf(4, 5, 6));
    EXPECT_EQ(object.getRenderQueueGroup(), 60);
}

TEST_F(PointVisualTest, PlaceThatIsNoNumberIsNotDrawnAndLeavesTheBoxOfTheRest)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinite = std::numeric_limits<float>::infinity();
    auto* group = new Visual(world);
    PointVisual::Build(group, {nan, 0, 0})->resetAppearance();
    PointVisual::Build(group, {0, infinite, 0})->setHighlighted();
    PointVisual::Build(group, {0, 0, std::numeric_limits<float>::max()});
    new PointsVisual(group, {{1, 2, 3}, {nan, nan, nan}, {4, 5, 6}});

    sceneManager->getRootSceneNode()->_update(true, false);

    EXPECT_EQ(group->getSceneNode()->_getWorldAABB(), Ogre::AxisAlignedBox(1, 2, 3, 4, 5, 6));
}

TEST_F(PointVisualTest, SetOfPointsTakesAColour)
{
    auto* points = new PointsVisual(world, {{1, 2, 3}, {4, 5, 6}});

    points->setColor({0.1f, 0.2f, 0.3f}, 0.4f);

    EXPECT_EQ(colorOf(*points), Ogre::Vector4(0.1f, 0.2f, 0.3f, 0.4f));
}

TEST_F(PointVisualTest, EmptySetOfPointsDrawsNothing)
{
    auto* points = new PointsVisual(world, {});

    points->setColor({1, 0, 0}, 1);

    EXPECT_THAT(objectOf(*points).getSections(), IsEmpty());
}

} // namespace
} // namespace vrk::visual
