#include "scene/Scene.h"
#include "scene/ViewLook.h"
#include "support/SceneFixture.h"
#include "view/Camera.h"
#include "visual/DynamicLines.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>

#include <algorithm>
#include <cmath>

namespace vrk::visual {
namespace {

/// Counts the lines that are drawn.
class LineCounter : public Ogre::RenderObjectListener {
public:
    void notifyRenderSingleObject(Ogre::Renderable* renderable, const Ogre::Pass*, const Ogre::AutoParamDataSource*,
                                  const Ogre::LightList*, bool) override
    {
        if (dynamic_cast<const DynamicLines*>(renderable))
            ++count;
    }
    int count = 0;
};

/// A box of 100 around the origin, in pictures of 300 rows, seen at an angle of 45 degrees, as all pictures of tests are.
class SmallEdges : public test::RenderTest {
protected:
    SmallEdges()
    {
        const TopoDS_Shape box = test::meshedBox(100, 100, 100);
        const auto body = test::addModelBody(box, "small-edges");
        SolidVisual::Build(world, body.get(), box);
        id = body->getId();
        visual()->setPosition(-50, -50, -50);
        setSize(400, 300);
        sceneManager->addRenderObjectListener(&counter);
    }
    ~SmallEdges() override
    {
        SetLineLook(LineLook::None);
        sceneManager->removeRenderObjectListener(&counter);
    }

    Visual* visual() const { return Scene::GetVisual(id); }
    /// From where the sphere around the box has that many pixels.
    int linesAt(float pixels)
    {
        render({{0, -1000, 0}, {0, 0, 0}, {0, 0, 1}}); // the camera's angle is known after a picture only
        const auto angle = Camera::Get()->getVFOV();
        const float radius = 51 * std::sqrt(3.0f);
        const float distance = radius * 300 / std::tan(angle / 2) / pixels;
        counter.count = 0;
        last = render({{0, -distance, 0}, {0, 0, 0}, {0, 0, 1}});
        return counter.count;
    }

    unsigned id = 0;
    LineCounter counter;
    test::Picture last;
};

TEST_F(SmallEdges, AreNotDrawnBelowTwentyPixels)
{
    EXPECT_EQ(linesAt(19.9f), 0);
    EXPECT_EQ(linesAt(20.1f), 1);
    EXPECT_EQ(linesAt(200), 1);
}

TEST_F(SmallEdges, SizeIsThatOfTheBodyAsItIsScaled)
{
    visual()->setScale(2, 2, 2);
    visual()->setPosition(-100, -100, -100);
    EXPECT_EQ(linesAt(9.9f), 0);
    EXPECT_EQ(linesAt(10.1f), 1);
}

TEST_F(SmallEdges, AreDrawnWhereTheEyeIsInTheBody)
{
    counter.count = 0;
    render({{0, -60, 0}, {0, 0, 0}, {0, 0, 1}});
    EXPECT_EQ(counter.count, 1);
}

TEST_F(SmallEdges, OfASelectedBodyAreDrawnFromTheSameSizeOn)
{
    scene.setVisualsSelected({id});
    EXPECT_EQ(linesAt(19.9f), 0) << "it is the outline that tells";
    EXPECT_EQ(linesAt(20.1f), 1);
    scene.clearSelectedVisuals();
}

TEST_F(SmallEdges, AsLinesAloneAreSeenFromFartherAway)
{
    SetLineLook(LineLook::Visible);
    EXPECT_EQ(linesAt(10), 1);
    EXPECT_EQ(linesAt(3.9f), 0);
    EXPECT_EQ(linesAt(4.1f), 1);
}

/// What is left out is what would not be seen: nothing jumps where it begins.
TEST_F(SmallEdges, PictureGoesOnWithoutAJumpWhereTheyBegin)
{
    linesAt(19.99f);
    const test::Picture without = last;
    linesAt(20.02f);
    int most = 0;
    for (unsigned y = 0; y < last.height; ++y)
        for (unsigned x = 0; x < last.width; ++x)
            most = std::max(most, test::difference(without.at(x, y), last.at(x, y)));
    EXPECT_LE(most, 6);
}

} // namespace
} // namespace vrk::visual
