#include "selection/geometry/Plane.h"
#include "selection/pick/PickCamera.h"
#include "view/OffscreenTarget.h"
#include "view/OrbitViewController.h"
#include "view/ViewTools.h"

#include <OgreHardwarePixelBuffer.h>

#include <functional>
#include <memory>
#include <stdexcept>

namespace vrk::visual {
namespace {

/// A target of OGRE's own, as an application makes one that does without ours.
class PlainTarget {
public:
    explicit PlainTarget(const std::string& name) : name(name)
    {
        target =
            Ogre::TextureManager::getSingleton()
                .createManual(name, "General", Ogre::TEX_TYPE_2D, 64, 48, 0, Ogre::PF_BYTE_RGB, Ogre::TU_RENDERTARGET)
                ->getBuffer()
                ->getRenderTarget();
    }
    ~PlainTarget() { Ogre::TextureManager::getSingleton().remove(name, "General"); }

    Ogre::RenderTarget* target;

private:
    std::string name;
};

class CameraTarget : public test::RenderTest {
protected:
    CameraTarget() : main(*Camera::Get())
    {
        test::addPickedBox(world, {-50, -50, -50}, {100, 100, 100});
        test::lookAlong(main, {20, -400, 30}, {0, 1, 0});
    }

    std::unique_ptr<Camera> addCamera() { return std::make_unique<Camera>("camera of a target", &scene); }
    static void expectNone(const Camera& camera)
    {
        EXPECT_FALSE(camera.isRenderTargetValid());
        EXPECT_EQ(camera.viewportWidth(), 0u);
        EXPECT_EQ(camera.viewportHeight(), 0u);
        EXPECT_FALSE(camera.getSnapshot().hasPixels());
        EXPECT_EQ(camera.ogreCamera()->getViewport(), nullptr);
    }
    static void drawFrame() { Ogre::Root::getSingleton().renderOneFrame(); }

    Camera& main;
};

TEST_F(CameraTarget, NullTakesTheCameraOffItsTarget)
{
    OffscreenTarget target(64, 48, 0);
    main.setRenderTarget(target.renderTarget());
    const float angle = main.getVFOV();

    main.setRenderTarget(nullptr);

    expectNone(main);
    EXPECT_FALSE(Camera::Published()->hasPixels());
    EXPECT_EQ(target.renderTarget()->getNumViewports(), 0);
    EXPECT_FLOAT_EQ(main.getVFOV(), angle) << "the lens stays as it is";
    EXPECT_NO_THROW(main.setRenderTarget(nullptr)) << "once more";
    EXPECT_NO_THROW(drawFrame());
    main.setRenderTarget(target.renderTarget());
    EXPECT_EQ(main.viewportWidth(), 64u);
}

TEST_F(CameraTarget, NullIsTakenByACameraThatNeverHadATarget)
{
    const auto camera = addCamera();

    EXPECT_NO_THROW(camera->setRenderTarget(nullptr));

    expectNone(*camera);
}

TEST_F(CameraTarget, RaysWithoutATargetAreRefused)
{
    main.setRenderTarget(nullptr);
    const auto refused = testing::ThrowsMessage<std::logic_error>(testing::StrEq("The camera has no render target."));
    rob::Posf origin;
    rob::Vec3f direction;

    EXPECT_THAT([&] { main.cameraToViewportRay(1, 1, origin, direction); }, refused);
    EXPECT_THAT([&] { main.getViewportRay(1, 1); }, refused);
    EXPECT_THAT([&] { main.getWorldPointOnPlane(1, 1, Plane({0, 0, 1}, 0), origin); }, refused);
}

TEST_F(CameraTarget, NothingLiesUnderThePixelsOfACameraWithoutTarget)
{
    const auto& picking = *selection::VisualSelection::Get();
    ASSERT_TRUE(picking.select(200, 150).hit);

    main.setRenderTarget(nullptr);

    EXPECT_FALSE(picking.select(200, 150).hit);
    EXPECT_FALSE(picking.selectPointInCloud(200, 150).hit);
    rob::Posef frame;
    EXPECT_FALSE(OrbitViewController::PickSurfaceFrame(200, 150, frame));
    EXPECT_FALSE(selection::PickCamera::Main().hasPixels());
}

TEST_F(CameraTarget, PostedGesturesThatNeedARayDoNothingOnceTheTargetIsGone)
{
    {
        const OffscreenTarget target(64, 48, 0);
        main.setRenderTarget(target.renderTarget());
        drain();
        main.clearOrbitPivot();
        main.startRotating(32, 24);
        main.translateScene(32, 24, 5, 5);
        main.zoom(32, 24, 0, 1);
    }
    const rob::Posef before = main.getWorldPose();

    EXPECT_NO_THROW(drain());

    EXPECT_EQ(main.getWorldPose(), before);
}

TEST_F(CameraTarget, OutlineAndFramesDoNothingOnceTheTargetIsGone)
{
    {
        const OffscreenTarget target(64, 48, 0);
        main.setRenderTarget(target.renderTarget());
        scene.setBorderHighlightEnabled(true);
        drawFrame();
    }
    expectNone(main);

    EXPECT_NO_THROW(scene.setBorderHighlightEnabled(true));
    EXPECT_NO_THROW(drawFrame());

    // The chain of the view that died is not that of the next one, whatever its address.
    const OffscreenTarget next(64, 48, 0);
    main.setRenderTarget(next.renderTarget());
    EXPECT_FALSE(Ogre::CompositorManager::getSingleton().hasCompositorChain(main.ogreCamera()->getViewport()));
    scene.setBorderHighlightEnabled(true);
    EXPECT_NO_THROW(drawFrame());
    scene.setBorderHighlightEnabled(false);
}

TEST_F(CameraTarget, TargetThatDiesLeavesEveryKindOfCameraAlone)
{
    const auto second = addCamera();
    {
        const OffscreenTarget ours(64, 48, 0);
        const PlainTarget plain("plain target that dies");
        main.setRenderTarget(ours.renderTarget());
        second->setRenderTarget(plain.target);
        drawFrame();
    }

    expectNone(main);
    expectNone(*second);
    EXPECT_NO_THROW(drawFrame());
}

TEST_F(CameraTarget, TargetWhoseTextureIsHeldStillLeavesTheCamera)
{
    Ogre::TexturePtr held;
    {
        const OffscreenTarget target(64, 48, 0);
        main.setRenderTarget(target.renderTarget());
        held = Ogre::TextureManager::getSingleton().getByName(
            target.renderTarget()->getName().substr(target.renderTarget()->getName().find("OffscreenTarget")));
        ASSERT_TRUE(held);
    }

    expectNone(main);
}

TEST_F(CameraTarget, CameraThatDiesLeavesTheTargetToTheNext)
{
    for (const bool isPlain : {false, true}) {
        SCOPED_TRACE(isPlain ? "plain" : "ours");
        const OffscreenTarget ours(64, 48, 0);
        const PlainTarget plain("plain target that stays");
        Ogre::RenderTarget& target = isPlain ? *plain.target : *ours.renderTarget();
        auto first = addCamera();
        first->setRenderTarget(&target);
        drawFrame();

        first.reset();

        EXPECT_EQ(target.getNumViewports(), 0);
        EXPECT_NO_THROW(drawFrame());
        const auto next = addCamera();
        next->setRenderTarget(&target);
        EXPECT_EQ(next->viewportWidth(), 64u);
        EXPECT_NO_THROW(drawFrame());
    }
}

TEST_F(CameraTarget, TakenTargetIsRefusedAndTheCameraKeepsItsOwn)
{
    const auto second = addCamera();
    const OffscreenTarget own(30, 20, 0);
    second->setRenderTarget(own.renderTarget());
    {
        const OffscreenTarget taken(64, 48, 0);
        main.setRenderTarget(taken.renderTarget());

        EXPECT_THROW(second->setRenderTarget(taken.renderTarget()), Ogre::Exception);

        EXPECT_EQ(second->viewportWidth(), 30u);
        EXPECT_EQ(main.viewportWidth(), 64u);
        main.setRenderTarget(nullptr);
        EXPECT_NO_THROW(second->setRenderTarget(taken.renderTarget())) << "now that it is free";
    }
    expectNone(main);
    expectNone(*second);
}

TEST_F(CameraTarget, CameraRefusedByItsFirstTargetStaysWithoutOne)
{
    const auto second = addCamera();
    {
        const OffscreenTarget taken(64, 48, 0);
        main.setRenderTarget(taken.renderTarget());
        EXPECT_THROW(second->setRenderTarget(taken.renderTarget()), Ogre::Exception);
        expectNone(*second);
    }

    expectNone(*second);
    EXPECT_NO_THROW(second->setHFOV(0.5f));
}

TEST_F(CameraTarget, ViewTakenOutOfTheTargetByHandIsForgotten)
{
    const OffscreenTarget target(64, 48, 0);
    main.setRenderTarget(target.renderTarget());

    target.renderTarget()->removeViewport(0);

    expectNone(main);
    EXPECT_NO_THROW(main.setRenderTarget(target.renderTarget()));
    EXPECT_EQ(main.viewportWidth(), 64u);
}

} // namespace
} // namespace vrk::visual
