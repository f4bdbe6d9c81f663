#include "view/OrbitPivotVisual.h"

#include "ViewTools.h"

#include "scene/core/SceneCore.h"
#include "support/SceneFixture.h"
#include "view/Camera.h"
#include "visual/DynamicLines.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

const rob::Posef somewhere({10, 20, 30}, rob::Rotationf(0.5f, 0.5f, 0.5f, 0.5f));

class OrbitPivotVisualTest : public test::RenderTest {
protected:
    /// The mark under the world; null before it was first shown.
    OrbitPivotVisual* mark() const
    {
        for (Visual* child : world->getChildren())
            if (auto* found = dynamic_cast<OrbitPivotVisual*>(child))
                return found;
        return nullptr;
    }
    OrbitPivotVisual& shownAt(const rob::Posef& pose)
    {
        scene.setOrbitPivotVisible(true, pose);
        drain();
        return *mark();
    }
    static float scaleOf(const Visual& visual) { return visual.getSceneNode()->getScale().x; }
};

TEST_F(OrbitPivotVisualTest, IsMadeAtThePoseWhenItIsFirstShown)
{
    scene.setOrbitPivotVisible(true, somewhere);
    EXPECT_EQ(mark(), nullptr) << "posted";
    drain();

    ASSERT_NE(mark(), nullptr);
    EXPECT_TRUE(mark()->isVisible());
    EXPECT_EQ(mark()->getWorldPose(), somewhere);
    for (const auto& line : mark()->getLines())
        EXPECT_TRUE(line->getVisible());
}

TEST_F(OrbitPivotVisualTest, HidingBeforeItWasShownMakesNone)
{
    scene.setOrbitPivotVisible(false, somewhere);
    drain();

    EXPECT_EQ(mark(), nullptr);
}

TEST_F(OrbitPivotVisualTest, HidingMovesItAsWell)
{
    const OrbitPivotVisual& visual = shownAt({});

    scene.setOrbitPivotVisible(false, somewhere);
    drain();

    EXPECT_FALSE(visual.isVisible());
    EXPECT_EQ(visual.getWorldPose(), somewhere);
}

TEST_F(OrbitPivotVisualTest, IsShownAgainAsTheSameVisual)
{
    const OrbitPivotVisual* first = &shownAt({});
    scene.setOrbitPivotVisible(false, {});

    EXPECT_EQ(&shownAt(somewhere), first);
    EXPECT_TRUE(first->isVisible());
}

TEST_F(OrbitPivotVisualTest, IsNeitherRegisteredNorPickable)
{
    OrbitPivotVisual& visual = shownAt(somewhere);

    EXPECT_FALSE(Scene::HasVisual(visual.getId()));
    EXPECT_FALSE(selection::VisualSelection::Get()->hasVisual(&visual));
    scene.setFrameVisualVisible(false);
    drain();
    EXPECT_TRUE(visual.isVisible()) << "it is not one of the station's frames";
    worldFrame->setVisible(false, false);
}

TEST_F(OrbitPivotVisualTest, AxesAreOneUnitLongBeforeTheScale)
{
    const OrbitPivotVisual& visual = shownAt({});

    ASSERT_EQ(visual.getLines().size(), 3u);
    for (const auto& line : visual.getLines())
        EXPECT_FLOAT_EQ((line->getPoints().back() - line->getPoints().front()).length(), 1);
    EXPECT_EQ(OrbitPivotVisual::ScreenRatio, 0.06f);
}

TEST_F(OrbitPivotVisualTest, ScaleFollowsTheDistanceInEachPicture)
{
    const OrbitPivotVisual& visual = shownAt({});

    render(test::lookingAtOrigin(1000));
    EXPECT_NEAR(scaleOf(visual), 60, 0.01f);

    render(test::lookingAtOrigin(100));
    EXPECT_NEAR(scaleOf(visual), 6, 0.001f);
}

TEST_F(OrbitPivotVisualTest, ScaleIsNeverBelowOne)
{
    const OrbitPivotVisual& visual = shownAt({});

    render(test::lookingAtOrigin(5));

    EXPECT_FLOAT_EQ(scaleOf(visual), 1);
}

TEST_F(OrbitPivotVisualTest, HiddenOneKeepsItsScale)
{
    const OrbitPivotVisual& visual = shownAt({});
    render(test::lookingAtOrigin(1000));
    scene.setOrbitPivotVisible(false, {});

    render(test::lookingAtOrigin(100));

    EXPECT_NEAR(scaleOf(visual), 60, 0.01f);
}

TEST_F(OrbitPivotVisualTest, OneThatDiedIsMadeAnew)
{
    scene.deleteVisual(&shownAt({}));
    EXPECT_EQ(mark(), nullptr);
    EXPECT_NO_THROW(render(test::lookingAtOrigin(100))) << "its listener left the camera";

    EXPECT_TRUE(shownAt(somewhere).isVisible());
}

TEST_F(OrbitPivotVisualTest, KeepsItsSizeInThePicture)
{
    test::addPickedBox(world, {-200, -200, -80}, {400, 400, 80});
    shownAt({});
    for (const float distance : {600.0f, 1800.0f}) {
        const test::Picture picture = render(test::lookingAtOrigin(distance));

        const rob::Vec2f end = test::pixelOf(*Camera::Get(), {0, 0, distance * OrbitPivotVisual::ScreenRatio});
        const rob::Vec2f origin = test::pixelOf(*Camera::Get(), {0, 0, 0});
        EXPECT_NEAR(origin.y - end.y, 18.8f, 0.5f) << "of the axis that points up, in pixels";
        EXPECT_TRUE(matchesBaseline(picture, distance < 1000 ? "orbit_pivot_near" : "orbit_pivot_far"));
    }
}

} // namespace
} // namespace vrk::visual
