#include "handles/FixedSizeHandle.h"

#include "HandleFixture.h"
#include "MouseDisplacementOracle.h"

#include "handles/HandleMeshVisual.h"
#include "handles/PathEndsHandle.h"
#include "handles/VectorHandle.h"
#include "platform/broker/SignalBroker.h"
#include "platform/common/Logger.h"
#include "support/ThrowsExactly.h"
#include "view/OffscreenTarget.h"
#include "view/ViewTools.h"
#include "visual/RenderGroups.h"

#include <numbers>

namespace vrk::visual {
namespace {

using test::throwsExactly;

selection::VisualSelection& picking()
{
    return *selection::VisualSelection::Get();
}

class FixedSizeHandleTest : public test::WithHandles<test::RenderTest> {
protected:
    FixedSizeHandleTest() : mesh(new HandleMeshVisual("part", &handle)) { mesh->attachMesh("DragHandleX"); }
    ~FixedSizeHandleTest() override
    {
        detachAll();
        handle.clearChildren();
    }

    float scaleAt(float distance)
    {
        Camera::Get()->setWorldPosition({0, 0, distance});
        handle.updateScale();
        return handle.getSceneNode()->getScale().x;
    }

    FixedSizeHandle handle{"handle", nullptr};
    HandleMeshVisual* mesh;
};

TEST_F(FixedSizeHandleTest, IsAGuiThatHangsNowhere)
{
    EXPECT_EQ(handle.getType(), VisualType::Gui);
    EXPECT_EQ(handle.getParent(), nullptr);
    EXPECT_EQ(handle.getName(), "handle");
}

TEST_F(FixedSizeHandleTest, HangsOnTheParentThatItIsGiven)
{
    const FixedSizeHandle other("other", world);

    EXPECT_EQ(other.getParent(), world);
}

TEST_F(FixedSizeHandleTest, ScaleGrowsWithTheDistanceOfTheCamera)
{
    EXPECT_FLOAT_EQ(scaleAt(1000), 0.25f);
    EXPECT_FLOAT_EQ(scaleAt(4000), 1.0f);
    const Ogre::Vector3 scale = handle.getSceneNode()->getScale();
    EXPECT_EQ(scale, Ogre::Vector3(scale.x));
}

TEST_F(FixedSizeHandleTest, AtTheCamerasOwnPlaceItIsGone)
{
    EXPECT_EQ(scaleAt(0), 0.0f);
}

TEST_F(FixedSizeHandleTest, EachPictureScalesIt)
{
    attach(&handle, world);

    render(test::lookingAtOrigin(2000));
    EXPECT_NEAR(handle.getSceneNode()->getScale().x, 0.5f, 1e-5f);
    render(test::lookingAtOrigin(800));
    EXPECT_NEAR(handle.getSceneNode()->getScale().x, 0.2f, 1e-5f);
}

TEST_F(FixedSizeHandleTest, ScaleOfWhatItHangsOnMultiplies)
{
    Visual* parent = addRegistered(world);
    parent->setScale(3, 3, 3);
    attach(&handle, parent);

    scaleAt(1000);

    EXPECT_FLOAT_EQ(handle.getSceneNode()->_getDerivedScale().x, 0.75f);
}

struct SettingCase {
    const char* name;
    float setting;
    float used;
};
class HandleScaleSetting : public FixedSizeHandleTest, public testing::WithParamInterface<SettingCase> {};

TEST_P(HandleScaleSetting, IsUsedWithinItsRangeOnly)
{
    scene.setHandleScale(GetParam().setting);

    EXPECT_FLOAT_EQ(scaleAt(4000), GetParam().used);
}
INSTANTIATE_TEST_SUITE_P(Table, HandleScaleSetting,
                         testing::Values(SettingCase{"Below", 0.4f, 1}, SettingCase{"Lowest", 0.5f, 0.5f},
                                         SettingCase{"Within", 2.5f, 2.5f}, SettingCase{"Highest", 10, 10},
                                         SettingCase{"Above", 11, 1}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(FixedSizeHandleTest, SettingNeedsNoPictureToBeRemembered)
{
    scene.setHandleScale(3);

    EXPECT_EQ(SceneCore::Get()->settings.handleScale, 3.0f);
    EXPECT_EQ(handle.getSceneNode()->getScale().x, 1.0f);
    drain();
    EXPECT_EQ(handle.getSceneNode()->getScale().x, 1.0f);
}

TEST_F(FixedSizeHandleTest, RegistrationIsNotedAtOnceAndDoneLater)
{
    handle.registerToSelection(true);
    EXPECT_TRUE(handle.isRegisteredInSelection());
    EXPECT_FALSE(picking().hasVisual(mesh));

    drain();
    EXPECT_TRUE(picking().hasVisual(mesh));

    handle.unregisterFromSelection();
    EXPECT_FALSE(handle.isRegisteredInSelection());
    EXPECT_TRUE(picking().hasVisual(mesh));

    drain();
    EXPECT_FALSE(picking().hasVisual(mesh));
}

TEST_F(FixedSizeHandleTest, SecondRegistrationPostsNothing)
{
    handle.registerToSelection(false);
    int signals = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] { ++signals; });

    handle.registerToSelection(true);
    EXPECT_EQ(signals, 0);
    handle.unregisterFromSelection();
    handle.unregisterFromSelection();
    EXPECT_EQ(signals, 1);
}

TEST_F(FixedSizeHandleTest, RegisteredOneMakesPickingDirtyWithEachPicture)
{
    attach(&handle, world);
    handle.registerToSelection(true);
    render(test::lookingAtOrigin(1000));
    picking().update();

    render(test::lookingAtOrigin(1000));

    EXPECT_TRUE(picking().isDirty());
}

TEST_F(FixedSizeHandleTest, RegisteredOneIsPickedInItsNewSize)
{
    attach(&handle, world);
    handle.registerToSelection(true);
    drain();
    // The arrow ends at 245 times its scale, along x.
    const auto isHit = [&](float distance, float x) {
        Camera::Get()->setWorldPosition({0, 0, distance});
        handle.updateScale();
        picking().update();
        return picking().select(Ray({x, 0.1f, 500}, {0, 0, -1})).visual == mesh;
    };

    EXPECT_TRUE(isHit(4000, 240));
    EXPECT_FALSE(isHit(2000, 240));
    EXPECT_TRUE(isHit(2000, 118));
}

TEST_F(FixedSizeHandleTest, EndTakesItOutOfPickingAtOnce)
{
    auto* other = new FixedSizeHandle("other", nullptr);
    auto* part = new HandleMeshVisual("part", other);
    part->attachMesh("DragHandleX");
    other->registerToSelection(true);
    drain();
    ASSERT_TRUE(picking().hasVisual(part));

    Visual::Delete(other);

    EXPECT_FALSE(picking().hasVisual(part));
    render(test::lookingAtOrigin(1000)); // which calls nothing of it
}

TEST_F(FixedSizeHandleTest, EndOverridesARegistrationThatWaits)
{
    auto* other = new FixedSizeHandle("other", nullptr);
    auto* part = new HandleMeshVisual("part", other);
    part->attachMesh("DragHandleX");
    other->registerToSelection(true);

    Visual::Delete(other);
    drain();

    EXPECT_FALSE(picking().hasVisual(part));
}

TEST_F(FixedSizeHandleTest, PartsKeepTheirQueueGroupWhenSelected)
{
    mesh->getEntity()->setRenderQueueGroup(renderGroup::handles);

    mesh->setSelected();
    EXPECT_EQ(mesh->getEntity()->getRenderQueueGroup(), renderGroup::handles);
    mesh->clearHighlightOrSelect();
    EXPECT_EQ(mesh->getEntity()->getRenderQueueGroup(), renderGroup::handles);
}

/// One of an application's own.
class MortalGui : public GuiVisual {
public:
    MortalGui(const std::string& name, int& deaths) : GuiVisual(name), deaths(deaths)
    {
        auto* mesh = new MeshVisual("part", this);
        mesh->attachMesh("DragHandleX");
        picking().addMeshVisual(this, false, true);
    }
    ~MortalGui() override { ++deaths; }

private:
    int& deaths;
};

class AttachGui : public test::WithHandles<test::SceneFixture> {
protected:
    ~AttachGui() override
    {
        if (deaths > 0)
            return;
        scene.detachGui(&gui);
        drain();
        Visual::Delete(&gui);
    }
    bool isPickable(const GuiVisual& handle) { return picking().isEnabled(*handle.getChildren().begin()); }
    bool isPickable() { return isPickable(gui); }
    void attach(GuiVisual* handle, Visual* target)
    {
        scene.attachGuiTo(handle, target, pose);
        drain();
    }
    void expectTakenOff()
    {
        EXPECT_EQ(deaths, 0);
        EXPECT_EQ(gui.getParent(), nullptr);
        EXPECT_FALSE(isPickable());
        EXPECT_EQ(currentGui(), nullptr);
    }

    const rob::Posef pose{{10, 20, 30}, rob::Rotationf(0.5f, rob::Dirf(0, 0, 1))};
    int deaths = 0;
    GuiVisual& gui = *new MortalGui("gui", deaths);
    Visual* grandparent = addRegistered(world);
    Visual* parent = addRegistered(grandparent, {100, 0, 0});
};

TEST_F(AttachGui, HangsItOnTheVisualOfAnIdAtAPoseRelativeToIt)
{
    scene.attachGuiTo(&gui, parent->getId(), pose);
    EXPECT_EQ(gui.getParent(), nullptr); // posted

    drain();

    EXPECT_EQ(gui.getParent(), parent);
    EXPECT_EQ(gui.getPose(), pose);
    EXPECT_EQ(gui.getWorldPosition(), rob::Posf(110, 20, 30));
    EXPECT_EQ(currentGui(), &gui);
}

TEST_F(AttachGui, HangsItOnAVisual)
{
    attach(&gui, parent);

    EXPECT_EQ(gui.getParent(), parent);
    EXPECT_EQ(gui.getPose(), pose);
    EXPECT_EQ(currentGui(), &gui);
}

TEST_F(AttachGui, AttachingAgainMovesIt)
{
    attach(&gui, parent);

    attach(&gui, grandparent);

    EXPECT_EQ(gui.getParent(), grandparent);
    EXPECT_EQ(currentGui(), &gui);
}

TEST_F(AttachGui, UnknownIdFailsOnTheRenderThread)
{
    scene.attachGuiTo(&gui, 123456u, pose);

    EXPECT_THAT([&] { drain(); }, throwsExactly<std::out_of_range>("invalid unordered_map<K, T> key"));
    EXPECT_EQ(gui.getParent(), nullptr);
    EXPECT_EQ(currentGui(), nullptr);
}

TEST_F(AttachGui, VisualThatDiesBeforeTheTaskRunsIsPassedOver)
{
    scene.removeVisual(parent->getId());
    scene.attachGuiTo(&gui, parent, pose);

    drain();

    EXPECT_EQ(gui.getParent(), nullptr);
    EXPECT_EQ(currentGui(), nullptr);
}

TEST_F(AttachGui, DetachingLeavesItNowhereAndAsPickableAsItWas)
{
    attach(&gui, parent);

    scene.detachGui(&gui);
    EXPECT_EQ(gui.getParent(), parent); // posted
    drain();

    EXPECT_EQ(gui.getParent(), nullptr);
    EXPECT_EQ(currentGui(), nullptr);
    EXPECT_TRUE(isPickable());
}

TEST_F(AttachGui, DetachingWhatHangsNowhereDoesNothing)
{
    scene.detachGui(&gui);
    drain();

    EXPECT_EQ(gui.getParent(), nullptr);
}

TEST_F(AttachGui, RemovalOfWhatItHangsOnTakesItOff)
{
    attach(&gui, parent);
    ASSERT_TRUE(isPickable());

    scene.removeVisual(parent->getId());
    drain();
    expectTakenOff();
}

TEST_F(AttachGui, RemovalOfAParentOfThatTakesItOff)
{
    attach(&gui, parent);

    scene.removeVisual(grandparent->getId());
    drain();
    expectTakenOff();
}

TEST_F(AttachGui, RemovalOfSomethingElseLeavesIt)
{
    Visual* sibling = addRegistered(grandparent);
    attach(&gui, parent);

    scene.removeVisual(sibling->getId());
    drain();

    EXPECT_EQ(gui.getParent(), parent);
    EXPECT_TRUE(isPickable());
    EXPECT_EQ(currentGui(), &gui);
}

TEST_F(AttachGui, OnlyTheOneAttachedLastIsTakenOff)
{
    int deathsOfSecond = 0;
    auto* second = new MortalGui("second", deathsOfSecond);
    attach(&gui, parent);
    attach(second, parent);
    EXPECT_EQ(currentGui(), second);
    EXPECT_EQ(gui.getParent(), parent);

    scene.removeVisual(parent->getId());
    drain();

    EXPECT_EQ(second->getParent(), nullptr);
    EXPECT_FALSE(isPickable(*second));
    EXPECT_EQ(currentGui(), nullptr);
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(deathsOfSecond, 0);
    Visual::Delete(second);
}

TEST_F(AttachGui, DetachingAnyForgetsTheCurrentOne)
{
    int deathsOfSecond = 0;
    auto* second = new MortalGui("second", deathsOfSecond);
    attach(&gui, grandparent);
    attach(second, parent);

    scene.detachGui(&gui);
    drain();
    EXPECT_EQ(currentGui(), nullptr);
    EXPECT_EQ(second->getParent(), parent);

    scene.removeVisual(parent->getId());
    drain();
    EXPECT_EQ(deathsOfSecond, 1);
}

TEST_F(AttachGui, DeletionOfWhatItHangsOnTakesItAlong)
{
    attach(&gui, parent);

    scene.deleteVisual(parent); // which only a removal by id spares it

    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(currentGui(), nullptr);
}

TEST_F(AttachGui, HandleThatDiesIsForgotten)
{
    attach(&gui, parent);

    scene.deleteVisual(&gui);

    EXPECT_EQ(currentGui(), nullptr);
    scene.removeVisual(parent->getId()); // asks nothing of it
    drain();
}

/// The handles that start-up makes.
class HandlesOfTheProcess : public test::WithHandles<test::SceneFixture> {
protected:
    std::array<GuiVisual*, 3> all() { return {DragHandle::Get(), VectorHandle::Get(), PathEndsHandle::Get()}; }
};

TEST_F(HandlesOfTheProcess, OutliveWhateverTheyHangOn)
{
    Visual* parent = addRegistered(world);
    auto* below = new Visual(parent);
    for (GuiVisual* gui : all())
        attach(gui, below);

    scene.deleteVisual(parent);

    for (GuiVisual* gui : all()) {
        EXPECT_EQ(gui->getParent(), nullptr);
        EXPECT_NE(gui->getChildren().begin(), gui->getChildren().end());
    }
    EXPECT_EQ(currentGui(), nullptr);
}

TEST_F(HandlesOfTheProcess, OutliveWhatTheyWereHungOnWithoutTheScene)
{
    Visual* parent = addRegistered(world);
    for (GuiVisual* gui : all())
        gui->attachTo(parent);

    scene.removeVisual(parent->getId());
    drain();

    for (GuiVisual* gui : all())
        EXPECT_EQ(gui->getParent(), nullptr);
}

TEST_F(HandlesOfTheProcess, AreNotPickedWhereTheyHaveBeenLeft)
{
    Visual* parent = addRegistered(world);
    attach(DragHandle::Get(), parent);
    attach(VectorHandle::Get(), parent); // so that the drag handle is not the current one
    picking().setCompoundObjectEnabled(DragHandle::Get(), true);

    scene.removeVisual(parent->getId());
    drain();

    for (Visual* part : DragHandle::Get()->getChildren())
        EXPECT_FALSE(picking().isEnabled(part));
}

class MouseDisplacement : public test::WithHandles<test::RenderTest> {
protected:
    /// Looks at about the origin from anywhere, through any lens, with the clip distances that a viewer would set.
    void placeCamera(std::mt19937& random)
    {
        std::uniform_real_distribution<float> number(-1, 1);
        const float distance = 1000 * std::pow(10.0f, number(random));
        Camera& camera = *Camera::Get();
        camera.setClipDist(distance / 20, distance * 100);
        camera.setHFOV(0.8f + 0.5f * number(random));
        const rob::Dirf from = rob::normalized(rob::Vec3f(number(random), number(random), number(random)));
        test::lookAlong(camera, rob::Posf(from * distance), -from);
    }
    ~MouseDisplacement() override
    {
        const SceneSettings settings = test::testSettings();
        Camera::Get()->setClipDist(settings.nearClip, settings.farClip);
        Camera::Get()->setHFOV(std::numbers::pi_v<float> / 3);
    }
    /// Where a point lies in the picture, in doubles; none for one behind the camera.
    static std::optional<rob::Vec2Template<double>> pixelOf(const rob::Posd& point)
    {
        const CameraSnapshot camera = Camera::Get()->getSnapshot();
        const auto applied = [](const CameraSnapshot::Matrix& m, const std::array<double, 4>& v) {
            std::array<double, 4> out{};
            for (std::size_t i = 0; i < 16; ++i)
                out[i / 4] += static_cast<double>(m[i]) * v[i % 4];
            return out;
        };
        const auto clip = applied(camera.projection, applied(camera.view, {point.x, point.y, point.z, 1}));
        if (clip[3] <= 0)
            return {};
        return rob::Vec2Template<double>((clip[0] / clip[3] * 0.5 + 0.5) * camera.width,
                                         (0.5 - clip[1] / clip[3] * 0.5) * camera.height);
    }
    static Ray rayOf(const rob::Vec2f& pixel)
    {
        Ray ray;
        rob::Vec3f direction;
        Camera::Get()->cameraToViewportRay(pixel.x, pixel.y, ray.origin, direction);
        ray.direction = rob::normalized(direction);
        return ray;
    }
    static rob::Posef randomPose(std::mt19937& random)
    {
        std::uniform_real_distribution<float> place(-40, 40);
        const float x = place(random);
        const float y = place(random);
        return {{x, y, place(random)}, test::randomRotation(random)};
    }
};

TEST_F(MouseDisplacement, OnTheImageOfTheAxisTheEndLiesUnderTheMouse)
{
    int asked = 0;
    for (unsigned seed = 0; seed < 600; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        placeCamera(random);
        const rob::Posef pose = randomPose(random);
        const auto axis = seed % 3;
        const rob::Vec3d along = rob::Posed(pose).rotation() * rob::Vec3d(test::axisNumber(axis));
        const float distance = (Camera::Get()->getWorldPosition() - pose.position).length();
        std::uniform_real_distribution<double> share(-0.3, 0.3);
        const rob::Posd grip = rob::Posd(pose.position);
        const rob::Posd goal = grip + along * (share(random) * static_cast<double>(distance));
        const auto from = pixelOf(grip);
        const auto to = pixelOf(goal);
        if (!from || !to)
            continue;
        const double sine = along.cross(rob::normalized(goal - rob::Posd(Camera::Get()->getWorldPosition()))).length();
        if (sine < 0.05)
            continue; // towards the viewer: there a pixel is farther than the axis reaches
        const rob::Vec2f mouse(static_cast<float>(to->x), static_cast<float>(to->y));

        const rob::Vec3f moved = GuiVisual::MouseDisplacement(
            {static_cast<float>(from->x), static_cast<float>(from->y)}, mouse, pose, test::axisNumber(axis));

        const auto end = pixelOf(grip + rob::Vec3d(moved));
        ASSERT_TRUE(end);
        EXPECT_NEAR(end->x, static_cast<double>(mouse.x), 0.1);
        EXPECT_NEAR(end->y, static_cast<double>(mouse.y), 0.1);
        ++asked;
    }
    EXPECT_GT(asked, 400);
}

TEST_F(MouseDisplacement, ElsewhereItIsWhatTheFormulaGives)
{
    int asked = 0;
    for (unsigned seed = 0; seed < 600; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        placeCamera(random);
        const rob::Posef pose = randomPose(random);
        const auto axis = seed % 3;
        std::uniform_real_distribution<float> across(0, 400);
        std::uniform_real_distribution<float> down(0, 300);
        const rob::Vec2f from(across(random), down(random));
        const rob::Vec2f to(across(random), down(random));

        rob::Vec3d moved;
        try {
            moved = rob::Vec3d(GuiVisual::MouseDisplacement(from, to, pose, test::axisNumber(axis)));
        } catch (const std::logic_error& failure) {
            EXPECT_STREQ(failure.what(), "The line is parallel with the plane");
            continue;
        }
        const rob::Vec3d expected = test::draggedAlong(axis, rayOf(from), rayOf(to), rob::Posed(pose));
        EXPECT_LE((moved - expected).length(), 1e-4 * expected.length());
        ++asked;
    }
    EXPECT_GT(asked, 590);
}

TEST_F(MouseDisplacement, MouseThatStandsStillMovesNothing)
{
    test::lookAlong(*Camera::Get(), {300, -900, 500}, {-3, 9, -5});

    EXPECT_EQ(GuiVisual::MouseDisplacement({120, 80}, {120, 80}, {}, {1, 0, 0}), rob::Vec3f());
}

TEST_F(MouseDisplacement, AxisInTheLineOfSightFails)
{
    test::lookAlong(*Camera::Get(), {1000, 0, 0}, {-1, 0, 0});

    EXPECT_THAT(
        [&] {
            GuiVisual::MouseDisplacement({200, 150}, {200, 150}, {}, {1, 0, 0});
        },
        throwsExactly<std::logic_error>("The line is parallel with the plane"));
}

TEST_F(MouseDisplacement, NoPositiveAxisFails)
{
    EXPECT_THAT(
        [&] {
            GuiVisual::MouseDisplacement({200, 150}, {210, 150}, {}, {0, -1, 0});
        },
        throwsExactly<std::overflow_error>("0-length vector cannot be normalized."));
}

TEST_F(MouseDisplacement, ViewWithoutPixelsMovesNothingAndSaysWhy)
{
    std::vector<std::string> lines;
    AppLogger::inst()->setListener([&](LogLevel, const std::string& line) { lines.push_back(line); });
    {
        const OffscreenTarget target(80, 60, 0);
        Camera::Get()->setRenderTarget(target.renderTarget());
    }

    const rob::Vec3f moved = GuiVisual::MouseDisplacement({1, 2}, {30, 40}, {}, {1, 0, 0});

    AppLogger::inst()->setListener({});
    EXPECT_EQ(moved, rob::Vec3f());
    EXPECT_THAT(lines, testing::ElementsAre("nothing was moved by the mouse: there is no view with pixels"));
}

TEST_F(MouseDisplacement, WhatIsNotFiniteMovesNothing)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    rob::Posef nowhere;
    nowhere.position.y = nan;

    EXPECT_EQ(GuiVisual::MouseDisplacement({nan, 1}, {2, 3}, {}, {1, 0, 0}), rob::Vec3f());
    EXPECT_EQ(GuiVisual::MouseDisplacement({1, 1}, {2, 3}, nowhere, {1, 0, 0}), rob::Vec3f());
}

} // namespace
} // namespace vrk::visual
