#include "view/AxesCross.h"

#include "mesh/MeshManager.h"
#include "platform/layout/Body.h"
#include "support/SceneFixture.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

using test::lookingAtOrigin;
using test::Picture;
using test::Pixel;
using test::View;

const Pixel background{115, 115, 115};

class CornerAxes : public test::RenderTest {
protected:
    CornerAxes() { showCornerAxes(true); }

    const Ogre::Entity& entityOf(const std::string& node) const
    {
        return static_cast<const Ogre::Entity&>(*sceneManager->getSceneNode(node)->getAttachedObject(0));
    }
};

const View oblique = lookingAtOrigin(500);

/// The pixel `x` to the right of the middle of the cross and `y` above it.
Pixel fromMiddle(const Picture& picture, int x, int y)
{
    return picture.at(static_cast<unsigned>(75 + x), static_cast<unsigned>(static_cast<int>(picture.height) - 75 - y));
}

TEST_F(CornerAxes, HangUnderTheRootAndBearTheirNames)
{
    Ogre::SceneNode* root = sceneManager->getSceneNode("GlobalFrame");

    EXPECT_EQ(root->getParent(), sceneManager->getRootSceneNode());
    for (const std::string label : {"X", "Y", "Z"}) {
        Ogre::SceneNode* axis = sceneManager->getSceneNode(label + "Axis");
        EXPECT_EQ(axis->getParent(), root);
        for (const char* part : {"Shaft", "Head", "Letter"})
            EXPECT_EQ(sceneManager->getSceneNode(label + part)->getParent(), axis);
        EXPECT_EQ(entityOf(label + "Shaft").getMesh()->getName(), "frame_axis_x_shaft");
        EXPECT_EQ(entityOf(label + "Head").getMesh()->getName(), "frame_axis_head");
        EXPECT_EQ(entityOf(label + "Letter").getMesh()->getName(), label);
        EXPECT_TRUE(MeshManager::Get()->hasMesh(label));
    }
}

TEST_F(CornerAxes, PartsStandWhereToldOnTheirAxis)
{
    for (const std::string label : {"X", "Y", "Z"}) {
        const Box& bounds = MeshManager::Get()->getMesh(label)->getBounds();
        const float middle = (bounds.min.y + bounds.max.y) / 2;
        EXPECT_EQ(sceneManager->getSceneNode(label + "Shaft")->getPosition(), Ogre::Vector3::ZERO);
        EXPECT_EQ(sceneManager->getSceneNode(label + "Head")->getPosition(), Ogre::Vector3(10, 0, 0));
        EXPECT_EQ(sceneManager->getSceneNode(label + "Letter")->getPosition(), Ogre::Vector3(15, -middle, 0));
        EXPECT_EQ(sceneManager->getSceneNode(label + "Letter")->getScale(), Ogre::Vector3(3, 3, 3));
    }
    const auto along = [&](const char* axis) {
        return sceneManager->getSceneNode(axis)->getOrientation() * Ogre::Vector3::UNIT_X;
    };
    EXPECT_TRUE(along("XAxis").positionEquals(Ogre::Vector3::UNIT_X, 1e-5f));
    EXPECT_TRUE(along("YAxis").positionEquals(Ogre::Vector3::UNIT_Y, 1e-5f));
    EXPECT_TRUE(along("ZAxis").positionEquals(Ogre::Vector3::UNIT_Z, 1e-5f));
}

TEST_F(CornerAxes, AreHalfAsLargeAgainAsMade)
{
    const AxesCross& cross = Camera::Get()->axesCross();

    EXPECT_EQ(cross.getScale(), 1.5f);
    EXPECT_EQ(cross.getWidth(), 75);
    EXPECT_EQ(cross.getHeight(), 75);
    EXPECT_EQ(sceneManager->getSceneNode("GlobalFrame")->getScale(), Ogre::Vector3(1.5f, 1.5f, 1.5f));
}

TEST_F(CornerAxes, EveryPartHasColourAndSizeAsParameters)
{
    const std::pair<std::string, Ogre::Vector4> colours[] = {
        {"X", {0.79f, 0.12f, 0.22f, 0.5f}}, {"Y", {0.09f, 0.66f, 0.32f, 0.5f}}, {"Z", {0.25f, 0.54f, 0.71f, 0.5f}}};

    for (const auto& [label, colour] : colours)
        for (const char* part : {"Shaft", "Head", "Letter"}) {
            const Ogre::SubEntity* entity = entityOf(label + part).getSubEntities().front();
            EXPECT_EQ(entity->getMaterialName(), "GlobalFrame");
            EXPECT_EQ(entity->getCustomParameter(0), colour) << label << part;
            EXPECT_EQ(entity->getCustomParameter(1), Ogre::Vector4(75, 75, 0, 0)) << label << part;
        }
}

TEST_F(CornerAxes, AreNeverCulled)
{
    for (const char* node : {"XShaft", "YHead", "ZLetter"})
        EXPECT_TRUE(entityOf(node).getMesh()->getBounds().isInfinite()) << node;
}

TEST_F(CornerAxes, TurnAgainstTheCameraWhileTheirLettersFaceTheViewer)
{
    render(oblique);

    const Ogre::SceneNode* root = sceneManager->getSceneNode("GlobalFrame");
    const Ogre::Quaternion turn = Camera::Get()->ogreCamera()->getRealOrientation();
    EXPECT_EQ(root->getPosition(), Ogre::Vector3(0, 0, -800));
    EXPECT_TRUE(root->getOrientation().equals(turn.Inverse(), Ogre::Radian(2e-3f)));
    for (const char* letter : {"XLetter", "YLetter", "ZLetter"})
        EXPECT_TRUE(sceneManager->getSceneNode(letter)->_getDerivedOrientation().equals(Ogre::Quaternion::IDENTITY,
                                                                                        Ogre::Radian(2e-3f)));
}

TEST_F(CornerAxes, FollowTheCameraWithoutDelay)
{
    render({{0, -500, 0}, {0, 0, 0}, {0, 0, 1}});

    const Picture first = render(oblique);
    const Picture second = render(oblique);

    EXPECT_EQ(test::largestDifference(first, second), 0);
}

TEST_F(CornerAxes, PointWhereTheWorldsAxesPoint)
{
    // From in front: x to the right, z up, y away from the viewer.
    const Picture picture = render({{0, -500, 0}, {0, 0, 0}, {0, 0, 1}});

    const Pixel x = fromMiddle(picture, 20, 0);
    const Pixel z = fromMiddle(picture, 0, 20);
    EXPECT_GT(x.r, x.b + 60);
    EXPECT_GT(z.b, z.r + 40);
    EXPECT_TRUE(isNear(fromMiddle(picture, -20, 0), background, 2));
    EXPECT_TRUE(isNear(fromMiddle(picture, 0, -20), background, 2));
}

struct SizeCase {
    unsigned width;
    unsigned height;
};

class CornerAxesSize : public CornerAxes, public testing::WithParamInterface<SizeCase> {
protected:
    static std::string Name(const SizeCase& c) { return std::to_string(c.width) + "x" + std::to_string(c.height); }
};

TEST_P(CornerAxesSize, IsTheSameInAnyWindow)
{
    const SizeCase& c = GetParam();
    const Picture expected = render(oblique);

    setSize(c.width, c.height);
    const Picture picture = render(oblique);

    for (unsigned fromLeft = 0; fromLeft < 150; ++fromLeft)
        for (unsigned fromBelow = 1; fromBelow <= 150; ++fromBelow)
            ASSERT_LE(difference(picture.at(fromLeft, c.height - fromBelow), expected.at(fromLeft, 300 - fromBelow)), 2)
                << fromLeft << ", " << fromBelow;
    showGrid(true);
    EXPECT_TRUE(matchesBaseline(render(oblique), "corner_axes_" + Name(c)));
}

INSTANTIATE_TEST_SUITE_P(Sizes, CornerAxesSize,
                         testing::Values(SizeCase{400, 300}, SizeCase{900, 500}, SizeCase{240, 420}),
                         [](const auto& info) {
                             return std::to_string(info.param.width) + "x" + std::to_string(info.param.height);
                         });

TEST_F(CornerAxes, StandInTheLowerLeftCornerOfAWindowAsInATexture)
{
    const Picture expected = render(oblique); // textures are drawn upside down, windows are not
    Ogre::Root& root = Ogre::Root::getSingleton();
    Ogre::RenderWindow* window = root.createRenderWindow("window with axes", 200, 180, false);

    Camera::Get()->setRenderTarget(window);
    root.renderOneFrame();
    Picture picture{200, 180, std::vector<std::uint8_t>(3 * 200 * 180)};
    window->copyContentsToMemory({0, 0, 200, 180},
                                 {200, 180, 1, Ogre::PF_BYTE_RGB, static_cast<void*>(picture.rgb.data())},
                                 Ogre::RenderTarget::FB_BACK);

    setSize(400, 300);
    root.destroyRenderTarget(window);
    for (unsigned fromLeft = 0; fromLeft < 150; ++fromLeft)
        for (unsigned fromBelow = 1; fromBelow <= 150; ++fromBelow)
            ASSERT_LE(difference(picture.at(fromLeft, 180 - fromBelow), expected.at(fromLeft, 300 - fromBelow)), 12)
                << fromLeft << ", " << fromBelow;
}

TEST_F(CornerAxes, AreInFrontOfTheScene)
{
    const TopoDS_Shape wall = test::meshedBox(4000, 10, 4000);
    const auto body = test::addModelBody(wall, "axes-wall", "#E8E8E8");
    SolidVisual::Build(world, body.get(), wall);
    Scene::GetVisual(body->getId())->setPosition(-2000, 0, -2000);

    const Picture picture = render({{0, -300, 0}, {0, 0, 0}, {0, 0, 1}});

    const Pixel x = fromMiddle(picture, 20, 0);
    EXPECT_GT(x.r, x.b + 60);
    EXPECT_TRUE(matchesBaseline(picture, "corner_axes_over_body"));
}

TEST_F(CornerAxes, FromBehindAndBelowTheLettersAreStillReadable)
{
    const Picture picture = render({{-300, 400, -350}, {0, 0, 0}, {0, 0, 1}});

    EXPECT_TRUE(matchesBaseline(picture, "corner_axes_from_below"));
}

TEST_F(CornerAxes, StayWholeWhereBodiesAreDrawnAsWires)
{
    const Picture before = render(oblique);

    scene.setDisplayMode(Scene::DisplayMode::Wire);
    const Picture after = render(oblique);
    scene.setDisplayMode(Scene::DisplayMode::Shaded);

    EXPECT_EQ(test::largestDifference(before, after), 0);
}

TEST_F(CornerAxes, OfAnotherCameraAreSeenOnlyByIt)
{
    const Picture before = render(oblique);

    Camera* second = scene.createCamera("camera with axes");
    const Picture after = render(oblique);
    EXPECT_EQ(test::largestDifference(before, after), 0);

    showCornerAxes(false);
    // The scene keeps its cameras, and a camera its target, to the end of the process.
    static auto* target = new OffscreenTarget(200, 150, 0);
    second->setRenderTarget(target->renderTarget());
    Ogre::Root::getSingleton().renderOneFrame();
    target->renderTarget()->setAutoUpdated(false);
    const Picture own{200, 150, target->read()};
    unsigned drawn = 0;
    for (unsigned y = 0; y < 150; ++y)
        for (unsigned x = 0; x < 150; ++x)
            drawn += difference(own.at(x, y), background) > 40;
    EXPECT_GT(drawn, 300u);
    const std::string end = " Daltrimo Scene::camera with axes";
    EXPECT_TRUE(sceneManager->hasSceneNode("GlobalFrame" + end));
    EXPECT_TRUE(sceneManager->hasSceneNode("YLetter" + end));
}

} // namespace
} // namespace vrk::visual
