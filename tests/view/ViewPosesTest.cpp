#include "platform/layout/Body.h"
#include "scene/core/SceneCore.h"
#include "support/SceneFixture.h"
#include "support/ThrowsExactly.h"
#include "view/Camera.h"
#include "visual/FrameVisual.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>

#include <cmath>
#include <numbers>

namespace vrk::visual {
namespace {

class ViewPoses : public test::RenderTest {
protected:
    ViewPoses() : camera(*Camera::Get())
    {
        setSize(400, 200);
        camera.setWorldPose({{0, 0, 500}, rob::Rotationf()});
    }

    SolidVisual* addBox(double size, const rob::Posf& position, Visual* parent = nullptr)
    {
        const TopoDS_Shape shape = test::meshedBox(size, size, size);
        const auto body = test::addModelBody(shape, "view-box-" + std::to_string(size));
        SolidVisual::Build(parent ? parent : world, body.get(), shape);
        auto* solid = static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
        solid->setPosition(position);
        return solid;
    }
    /// Where a camera that fits a sphere of this radius stands.
    float fitDistance(float radius, float k = 1) const { return radius / std::sin(camera.getVFOV() * 0.5f * k); }

    Camera& camera;
};

const float sqrt3 = std::sqrt(3.0f);

void expectAt(const rob::Posef& pose, float x, float y, float z)
{
    EXPECT_NEAR(pose.position.x, x, 0.01 * std::max(1.0f, std::abs(x)));
    EXPECT_NEAR(pose.position.y, y, 0.01 * std::max(1.0f, std::abs(y)));
    EXPECT_NEAR(pose.position.z, z, 0.01 * std::max(1.0f, std::abs(z)));
}

void expectLooksAlong(const rob::Posef& pose, const rob::Dirf& dir)
{
    const rob::Dirf forward = pose.rotation() * rob::Dirf(0, 0, -1);
    EXPECT_NEAR(forward.dot(dir), 1, 1e-5);
}

TEST_F(ViewPoses, EmptySceneIsABoxOfTwoHundredUnits)
{
    const rob::Posef pose = scene.getViewAllPose();

    expectAt(pose, 0, 0, fitDistance(100 * sqrt3));
    expectLooksAlong(pose, {0, 0, -1});
}

TEST_F(ViewPoses, HiddenBodiesAreSkipped)
{
    addBox(5000, {1000, 1000, 1000})->setVisible(false, true);

    expectAt(scene.getViewAllPose(), 0, 0, fitDistance(100 * sqrt3));
}

TEST_F(ViewPoses, BodiesAreFittedWithoutAFrameInBetween)
{
    addBox(100, {0, 0, 0});
    addBox(100, {300, 0, 0});

    const rob::Posef pose = scene.getViewAllPose();

    const float radius = std::sqrt(200.0f * 200 + 50 * 50 + 50 * 50);
    expectAt(pose, 200, 50, 50 + fitDistance(radius));
}

TEST_F(ViewPoses, HiddenBodyBelowAVisibleOneStillCounts)
{
    SolidVisual* visible = addBox(100, {0, 0, 0});
    addBox(100, {300, 0, 0}, visible)->setVisible(false, true);

    const float radius = std::sqrt(200.0f * 200 + 50 * 50 + 50 * 50);
    expectAt(scene.getViewAllPose(), 200, 50, 50 + fitDistance(radius));
}

TEST_F(ViewPoses, WhatIsDrawnAlwaysIsNotFitted)
{
    SolidVisual* solid = addBox(100, {0, 0, 0});
    addBox(100, {300, 0, 0}, solid);
    auto* label = new Visual(solid);
    Ogre::Entity* letter = Scene::GetSceneManager()->createEntity("X"); // of the corner axes, which have no end
    ASSERT_TRUE(letter->getBoundingBox().isInfinite());
    label->attachObject(letter);

    const rob::Posef all = scene.getViewAllPose();
    const rob::Posef focus = scene.getVisualFocusPose(solid->getId());

    const float radius = std::sqrt(200.0f * 200 + 50 * 50 + 50 * 50);
    expectAt(all, 200, 50, 50 + fitDistance(radius));
    expectAt(focus, 200, 50, 50 + fitDistance(radius));
    label->detachObject(letter);
    Scene::GetSceneManager()->destroyEntity(letter);
}

TEST_F(ViewPoses, SmallSceneKeepsARadiusOfTen)
{
    addBox(2, {-1, -1, -1});

    expectAt(scene.getViewAllPose(), 0, 0, fitDistance(10));
}

TEST_F(ViewPoses, NarrowWindowDoublesTheDistance)
{
    setSize(200, 400);

    expectAt(scene.getViewAllPose(), 0, 0, fitDistance(100 * sqrt3) * 2);
}

TEST_F(ViewPoses, DirectionOfThePresentViewKeepsTheRotation)
{
    EXPECT_EQ(scene.getViewPoseForDir({0, 0, -1}).rotation(), camera.getWorldRotation());
}

TEST_F(ViewPoses, OppositeDirectionIsAHalfTurnAboutTheCamerasXAxis)
{
    const rob::Posef pose = scene.getViewPoseForDir({0, 0, 1});

    expectAt(pose, 0, 0, -fitDistance(100 * sqrt3));
    expectLooksAlong(pose, {0, 0, 1});
    const rob::Dirf right = pose.rotation() * rob::Dirf(1, 0, 0);
    EXPECT_NEAR(right.x, 1, 1e-5);
}

TEST_F(ViewPoses, OppositeDirectionOfATurnedCameraKeepsItsXAxis)
{
    const rob::Rotationf rolled(1.0f, rob::Dirf(0, 0, 1));
    camera.setWorldPose({{0, 0, 500}, rolled});

    const rob::Posef pose = scene.getViewPoseForDir({0, 0, 1});

    expectLooksAlong(pose, {0, 0, 1});
    const rob::Dirf right = pose.rotation() * rob::Dirf(1, 0, 0);
    EXPECT_NEAR((right - rolled * rob::Dirf(1, 0, 0)).length(), 0, 1e-5f);
}

struct SlightTurnCase {
    const char* name;
    float angle; // of the direction from the view
    bool turns;
};

class SlightTurn : public ViewPoses, public testing::WithParamInterface<SlightTurnCase> {};

TEST_P(SlightTurn, IsMadeOnceItsCosineIsAMillionthBelowOne)
{
    const float angle = GetParam().angle;
    const rob::Posef ahead = scene.getViewPoseForDir({std::sin(angle), 0, -std::cos(angle)});
    const rob::Posef behind = scene.getViewPoseForDir({std::sin(angle), 0, std::cos(angle)});

    // The rotation is that of the limit itself, or one that looks along the very direction.
    const rob::Dirf forward = ahead.rotation() * rob::Dirf(0, 0, -1);
    const rob::Dirf backward = behind.rotation() * rob::Dirf(0, 0, -1);
    EXPECT_NEAR(forward.x, GetParam().turns ? std::sin(angle) : 0, 1e-4f);
    EXPECT_NEAR(backward.x, GetParam().turns ? std::sin(angle) : 0, 1e-4f);
}

INSTANTIATE_TEST_SUITE_P(Table, SlightTurn,
                         testing::Values(SlightTurnCase{"Below", 0.0012f, false},
                                         SlightTurnCase{"Above", 0.0017f, true}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(ViewPoses, OtherDirectionIsReachedTheShortWay)
{
    const rob::Posef pose = scene.getViewPoseForDir({0, 1, 0});

    expectAt(pose, 0, -fitDistance(100 * sqrt3), 0);
    expectLooksAlong(pose, {0, 1, 0});
    const rob::Rotationf turn = pose.rotation() * camera.getWorldRotation().inverse();
    EXPECT_NEAR(2 * std::acos(std::abs(turn.w)), std::numbers::pi / 2, 1e-4);
}

TEST_F(ViewPoses, DirectionWithUpFixesTheWholeRotation)
{
    const rob::Posef pose = scene.getViewPoseForDir({0, 1, 0}, {0, 0, 1});

    expectLooksAlong(pose, {0, 1, 0});
    const rob::Dirf up = pose.rotation() * rob::Dirf(0, 1, 0);
    EXPECT_NEAR(up.z, 1, 1e-5);
}

TEST_F(ViewPoses, UpNeedNotStandAcrossTheDirection)
{
    const float h = std::sqrt(0.5f);

    const rob::Posef pose = scene.getViewPoseForDir({0, h, -h}, {0, 0, 1});

    expectLooksAlong(pose, {0, h, -h});
    EXPECT_NEAR((pose.rotation() * rob::Dirf(1, 0, 0)).x, 1, 1e-5);
    const rob::Dirf up = pose.rotation() * rob::Dirf(0, 1, 0);
    EXPECT_NEAR((up - rob::Dirf(0, h, h)).length(), 0, 1e-5f);
}

TEST_F(ViewPoses, CenterPoseTurnsToTheOriginWhereItStands)
{
    camera.setWorldPose({{300, 0, 400}, rob::Rotationf()});

    const rob::Posef pose = scene.getViewCenterPose();

    EXPECT_EQ(pose.position, rob::Posf(300, 0, 400));
    expectLooksAlong(pose, {-0.6f, 0, -0.8f});
}

TEST_F(ViewPoses, CenterPoseAtTheOriginLooksDown)
{
    camera.setWorldPose({{0, 0, 0}, rob::Rotationf(std::sqrt(0.5f), std::sqrt(0.5f), 0, 0)});

    expectLooksAlong(scene.getViewCenterPose(), {0, 0, -1});
}

TEST_F(ViewPoses, FocusFillsTheViewWithTheBodiesBelow)
{
    auto* part = new Visual(world);
    part->setType(VisualType::Part);
    SceneCore::Get()->visuals.enter(part);
    addBox(100, {1000, 0, 0}, part);
    addBox(5000, {0, 0, 0}); // elsewhere

    const rob::Posef pose = scene.getVisualFocusPose(part->getId());

    expectAt(pose, 1050, 50, 50 + fitDistance(50 * sqrt3));
    EXPECT_EQ(pose.rotation(), camera.getWorldRotation());
}

TEST_F(ViewPoses, SmallThingsAreLeftAtTwiceTheDistance)
{
    auto* frame = new FrameVisual(world, 100.0f);
    SceneCore::Get()->visuals.enter(frame);
    addBox(100, {0, 0, 0}, frame); // gives its node a box

    const rob::Posef pose = scene.getVisualFocusPose(frame->getId());

    expectAt(pose, 50, 50, 50 + fitDistance(50 * sqrt3, 0.5f));
}

TEST_F(ViewPoses, HiddenBodyIsBroughtIntoViewAllTheSame)
{
    SolidVisual* hidden = addBox(100, {1000, 0, 0});
    hidden->setVisible(false, true);

    expectAt(scene.getVisualFocusPose(hidden->getId()), 1050, 50, 50 + fitDistance(50 * sqrt3));
}

struct KindCase {
    const char* name;
    VisualType type;
    bool counts;
};

const auto nameOfKind = [](const auto& info) { return std::string(info.param.name); };

class SceneKind : public ViewPoses, public testing::WithParamInterface<KindCase> {};

TEST_P(SceneKind, IsFittedOrPassedOver)
{
    SolidVisual* body = addBox(400, {-200, -200, -200});
    body->setType(GetParam().type);

    const rob::Posef pose = scene.getViewAllPose();
    body->setType(VisualType::Solid);

    expectAt(pose, 0, 0, fitDistance((GetParam().counts ? 200 : 100) * sqrt3));
}

INSTANTIATE_TEST_SUITE_P(
    Table, SceneKind,
    testing::Values(KindCase{"Solid", VisualType::Solid, true}, KindCase{"Mesh", VisualType::Mesh, true},
                    KindCase{"Curve", VisualType::Curve, false}, KindCase{"Point", VisualType::Point, false},
                    KindCase{"PointCloud", VisualType::PointCloud, false}, KindCase{"Frame", VisualType::Frame, false}),
    nameOfKind);

class FocusKind : public ViewPoses, public testing::WithParamInterface<KindCase> {};

TEST_P(FocusKind, CountsBelowAnAssemblyOrIsPassedOver)
{
    auto* assembly = new Visual(world);
    assembly->setType(VisualType::Assembly);
    SceneCore::Get()->visuals.enter(assembly);
    SolidVisual* body = addBox(100, {1000, 0, 0}, new Visual(assembly));
    body->setType(GetParam().type);

    const rob::Posef pose = scene.getVisualFocusPose(assembly->getId());
    body->setType(VisualType::Solid);

    if (GetParam().counts)
        expectAt(pose, 1050, 50, 50 + fitDistance(50 * sqrt3));
    else
        EXPECT_EQ(pose, camera.getWorldPose());
}

INSTANTIATE_TEST_SUITE_P(
    Table, FocusKind,
    testing::Values(KindCase{"Solid", VisualType::Solid, true}, KindCase{"Curve", VisualType::Curve, true},
                    KindCase{"Mesh", VisualType::Mesh, true}, KindCase{"Point", VisualType::Point, true},
                    KindCase{"PointCloud", VisualType::PointCloud, false}, KindCase{"Frame", VisualType::Frame, false},
                    KindCase{"RobotTarget", VisualType::Robtarget, false}),
    nameOfKind);

class SmallThing : public ViewPoses, public testing::WithParamInterface<KindCase> {};

TEST_P(SmallThing, IsLeftAtTwiceTheDistanceAndAnythingElseFillsTheView)
{
    auto* thing = new Visual(world);
    thing->setType(GetParam().type);
    SceneCore::Get()->visuals.enter(thing);
    addBox(100, {0, 0, 0}, thing); // gives its node a box

    const rob::Posef pose = scene.getVisualFocusPose(thing->getId());

    expectAt(pose, 50, 50, 50 + fitDistance(50 * sqrt3, GetParam().counts ? 0.5f : 1.0f));
}

INSTANTIATE_TEST_SUITE_P(
    Table, SmallThing,
    testing::Values(KindCase{"PointCloud", VisualType::PointCloud, true}, KindCase{"Point", VisualType::Point, true},
                    KindCase{"Frame", VisualType::Frame, true}, KindCase{"Tcp", VisualType::Tcp, true},
                    KindCase{"WorkObject", VisualType::WObj, true},
                    KindCase{"RobotTarget", VisualType::Robtarget, false}, KindCase{"Part", VisualType::Part, false},
                    KindCase{"Manipulator", VisualType::Manipulator, false}),
    nameOfKind);

TEST_F(ViewPoses, FocusOnNothingVisibleIsThePresentPose)
{
    auto* assembly = new Visual(world);
    assembly->setType(VisualType::Assembly);
    SceneCore::Get()->visuals.enter(assembly);

    EXPECT_EQ(scene.getVisualFocusPose(assembly->getId()), camera.getWorldPose());
}

TEST_F(ViewPoses, FocusOnAnUnknownIdFails)
{
    EXPECT_THAT([this] { scene.getVisualFocusPose(4711); },
                test::throwsExactly<std::out_of_range>("invalid unordered_map<K, T> key"));
}

} // namespace
} // namespace vrk::visual
