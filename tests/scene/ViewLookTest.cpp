#include "scene/ViewLook.h"

#include "platform/broker/SignalBroker.h"
#include "scene/Scene.h"
#include "scene/core/SceneCore.h"
#include "support/LoggedMessages.h"
#include "support/SceneFixture.h"
#include "view/Camera.h"
#include "visual/PointCloudVisual.h"
#include "visual/RenderGroups.h"
#include "visual/ScanClouds.h"
#include "visual/SolidVisual.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <Ogre.h>

namespace vrk::visual {
namespace {

using rob::Colorf;
using rob::Posf;
using test::lookingAtOrigin;
using test::Picture;
using test::Pixel;
using test::View;

int brightness(const Pixel& pixel)
{
    return pixel.r + pixel.g + pixel.b;
}

class ViewLook : public test::RenderTest {
protected:
    ~ViewLook() override
    {
        SetDepthShade(false);
        ResetBackground();
        scene.setBorderHighlightEnabled(false);
    }

    SolidVisual* add(const TopoDS_Shape& shape, const std::string& uri, const std::string& color = "#C8CCD0")
    {
        const auto body = test::addModelBody(shape, uri, color);
        SolidVisual::Build(world, body.get(), shape);
        return static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    }
    /// A block of 200 x 200 x 60 around the origin with a hole in it from above.
    SolidVisual* addBlockWithHole()
    {
        const TopoDS_Shape block = BRepPrimAPI_MakeBox(gp_Pnt(-100, -100, -60), gp_Pnt(100, 100, 0)).Shape();
        const TopoDS_Shape hole = BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(0, 0, -50), gp_Dir(0, 0, 1)), 16, 60).Shape();
        return add(test::meshed(BRepAlgoAPI_Cut(block, hole).Shape()), "block-with-hole");
    }
    Ogre::CompositorChain& chain() const
    {
        return *Ogre::CompositorManager::getSingleton().getCompositorChain(Camera::Get()->ogreCamera()->getViewport());
    }
    bool hasShadeInChain() const
    {
        const Ogre::CompositorInstance* shade = chain().getCompositor("DepthShade");
        return shade && shade->getEnabled();
    }
};

const View fromAbove{{0, -150, 380}, {0, 0, 0}, {0, 0, 1}};

TEST_F(ViewLook, PocketsAreDarkerAndFacesAsBefore)
{
    addBlockWithHole();
    const Picture plain = render(fromAbove);

    SetDepthShade(true);
    const Picture shaded = render(fromAbove);

    const Posf inHole{0, 16, -32};
    EXPECT_LT(brightness(pixelAt(shaded, inHole)), 0.8 * brightness(pixelAt(plain, inHole)));
    for (const Posf& onTop : {Posf{60, 60, 0}, Posf{-70, -20, 0}, Posf{50, -60, 0}})
        EXPECT_LE(test::difference(pixelAt(shaded, onTop), pixelAt(plain, onTop)), 1);
    EXPECT_EQ(test::difference(shaded.at(3, 3), plain.at(3, 3)), 0) << "behind the scene";
}

TEST_F(ViewLook, PlanesAreNotShadedHoweverTheyAreInclined)
{
    add(test::meshedBox(2000, 2000, 1), "floor")->setPosition({-1000, -1000, 0});
    for (const float height : {15.0f, 60.0f, 400.0f}) {
        const View view{{0, -300, height}, {0, 0, 0}, {0, 0, 1}};
        SetDepthShade(false);
        const Picture plain = render(view);
        SetDepthShade(true);
        const Picture shaded = render(view);
        EXPECT_LE(test::largestDifference(plain, shaded), 2) << height;
    }
}

TEST_F(ViewLook, FarThingsAreNotShadedByWhatStandsBeforeThem)
{
    add(test::meshedBox(2000, 10, 2000), "wall")->setPosition({-1000, 600, -1000});
    add(test::meshedBox(40, 40, 400), "post", "#E0A020")->setPosition({-20, -200, -200});
    const View front{{0, -800, 0}, {0, 0, 0}, {0, 0, 1}};
    const Picture plain = render(front);
    SetDepthShade(true);
    const Picture shaded = render(front);

    const Posf besidePost{50, 600, 0}; // some pixels from it in the picture
    EXPECT_LE(test::difference(pixelAt(shaded, besidePost), pixelAt(plain, besidePost)), 3);
}

TEST_F(ViewLook, WhatIsSeenThroughCastsNoShade)
{
    add(test::meshedBox(400, 10, 400), "wall")->setPosition({-200, 30, -200});
    SolidVisual* glass = add(test::meshedBox(60, 10, 60), "glass");
    glass->setPosition({-30, 10, -30});
    glass->setMaterial("TransBody", "TransBody", "TransBody");
    const View front{{0, -400, 0}, {0, 0, 0}, {0, 0, 1}};
    const Picture plain = render(front);
    SetDepthShade(true);
    EXPECT_LE(test::largestDifference(plain, render(front)), 2);
}

TEST_F(ViewLook, ShadeIsTheSameWithTheOutlineOfWhatIsSelected)
{
    addBlockWithHole();
    add(test::meshedBox(60, 60, 60), "selected", "#8090A0")->setPosition({30, 30, 0});
    SetDepthShade(true);
    const Picture before = render(fromAbove);
    scene.setBorderHighlightEnabled(true);
    const Picture withBorder = render(fromAbove);

    EXPECT_EQ(test::largestDifference(before, withBorder), 0) << "nothing is selected";
    SetDepthShade(false);
    const Picture plain = render(fromAbove);
    EXPECT_GT(test::largestDifference(plain, withBorder), 20);
    SetDepthShade(true);
    EXPECT_EQ(test::largestDifference(before, render(fromAbove)), 0);
    scene.setBorderHighlightEnabled(false);
    EXPECT_EQ(test::largestDifference(before, render(fromAbove)), 0);
}

class PlacesOfShade : public ViewLook, public testing::WithParamInterface<Posf> {};

TEST_P(PlacesOfShade, ShadeIsTheSameInTheMiddleAndAtEdges)
{
    SolidVisual* block = addBlockWithHole();
    block->setPosition(GetParam());
    SetDepthShade(true);
    const Picture measuredInPart = render(fromAbove);
    // A point within the block. It does not tell where it lies, and all of the picture is measured.
    PointCloudVisual::Build(world, test::addModelCloud({GetParam() + rob::Vec3f(60, 60, -30)}).get());

    EXPECT_EQ(test::largestDifference(measuredInPart, render(fromAbove)), 0);
    SetDepthShade(false);
    EXPECT_GT(test::largestDifference(measuredInPart, render(fromAbove)), 20);
}

INSTANTIATE_TEST_SUITE_P(InThePicture, PlacesOfShade,
                         testing::Values(Posf{0, 0, 0}, Posf{-200, 0, 0}, Posf{140, -90, 0}, Posf{0, -60, 200}));

TEST_F(ViewLook, ShadeIsTheSameBesideWhatReachesBehindTheCamera)
{
    addBlockWithHole();
    SetDepthShade(true);
    const Posf inHole{0, 16, -32};
    const Pixel before = pixelAt(render(fromAbove), inHole);
    add(test::meshedBox(20, 20, 900), "post")->setPosition({180, -150, -60});
    EXPECT_EQ(test::difference(pixelAt(render(fromAbove), inHole), before), 0);
}

TEST_F(ViewLook, OutlineIsAddedToAChainThatHoldsTheShade)
{
    SetDepthShade(true);
    ASSERT_TRUE(hasShadeInChain());
    const test::LoggedMessages messages;

    scene.setBorderHighlightEnabled(true);
    scene.setBorderHighlightEnabled(true);

    ASSERT_NE(chain().getCompositor("BorderHighlight"), nullptr);
    EXPECT_TRUE(chain().getCompositor("BorderHighlight")->getEnabled());
    EXPECT_EQ(chain().getCompositorInstances().size(), 2u);
    EXPECT_THAT(messages.others, testing::ElementsAre("addCompositor: BorderHighlight"));
    EXPECT_TRUE(hasShadeInChain());
}

class ShadedHandle : public ViewLook, public testing::WithParamInterface<bool> {};

TEST_P(ShadedHandle, IsInFrontAndNotShaded)
{
    addBlockWithHole();
    SolidVisual* handle = add(test::meshedBox(16, 16, 16), "handle", "#C02018");
    handle->setPosition({-8, -8, -50}); // in the hole
    handle->getEntity()->setRenderQueueGroup(renderGroup::handles);
    scene.setBorderHighlightEnabled(GetParam());
    const Picture plain = render(fromAbove);
    SetDepthShade(true);
    const Picture shaded = render(fromAbove);

    const Posf onHandle{0, 0, -34};
    EXPECT_GT(pixelAt(shaded, onHandle).r, pixelAt(shaded, onHandle).g + 60);
    EXPECT_EQ(test::difference(pixelAt(shaded, onHandle), pixelAt(plain, onHandle)), 0);
}

INSTANTIATE_TEST_SUITE_P(Outline, ShadedHandle, testing::Bool(),
                         [](const auto& info) { return info.param ? "With" : "Without"; });

TEST_F(ViewLook, ShadeFollowsToAnotherRenderTarget)
{
    addBlockWithHole();
    SetDepthShade(true);
    setSize(300, 200);
    EXPECT_TRUE(HasDepthShade());
    const Picture shaded = render(fromAbove);
    SetDepthShade(false);
    EXPECT_GT(test::largestDifference(shaded, render(fromAbove)), 20);
}

TEST_F(ViewLook, SwitchedOffItLeavesThePictureAsItWas)
{
    addBlockWithHole();
    const Picture before = render(fromAbove);
    SetDepthShade(true);
    render(fromAbove);
    SetDepthShade(false);
    EXPECT_EQ(test::largestDifference(before, render(fromAbove)), 0);
    EXPECT_FALSE(HasDepthShade());
}

TEST_F(ViewLook, ShadedBlockLooksAsItDid)
{
    setSize(400, 300, 4);
    addBlockWithHole();
    add(test::meshedBox(50, 50, 40), "on-top", "#D08030")->setPosition({20, 20, 0});
    SetDepthShade(true);
    SetBackground({0.30f, 0.34f, 0.39f}, {0.59f, 0.63f, 0.68f});

    EXPECT_TRUE(matchesBaseline(render({{180, -260, 260}, {0, 0, -10}, {0, 0, 1}}), "depth_shade_of_a_block"));
}

// Outline around what the mouse is on

/// White between dark, as nothing else in these pictures.
double whiteShare(const Picture& picture)
{
    int count = 0;
    for (unsigned y = 0; y < picture.height; ++y)
        for (unsigned x = 0; x < picture.width; ++x)
            if (const Pixel pixel = picture.at(x, y); pixel.r > 190 && pixel.g > 190 && pixel.b > 190)
                ++count;
    return static_cast<double>(count) / (picture.width * picture.height);
}

class HoverOutlinePicture : public ViewLook {
protected:
    ~HoverOutlinePicture() override { SetOutlined({}); }

    unsigned addBox(const std::string& color, const Posf& at)
    {
        SolidVisual* box = add(test::meshedBox(100, 100, 100), "hover-box" + color, color);
        box->setPosition(at);
        return box->getId();
    }
};

TEST_F(HoverOutlinePicture, GoesAroundWhatItIsSetAroundAndLeavesThePictureAsItWas)
{
    const unsigned box = addBox("#304050", {-50, -50, -50});
    const Picture before = render(lookingAtOrigin(400));

    SetOutlined({box});
    const Picture with = render(lookingAtOrigin(400));
    SetOutlined({});
    const Picture after = render(lookingAtOrigin(400));

    EXPECT_GT(whiteShare(with), 0.003);
    EXPECT_LT(whiteShare(before), 0.001);
    EXPECT_EQ(test::difference(pixelAt(with, {0, 0, 50}), pixelAt(before, {0, 0, 50})), 0) << "the body itself";
    EXPECT_EQ(test::largestDifference(before, after), 0);
}

TEST_F(HoverOutlinePicture, GoesAroundTheBodiesBelowAVisual)
{
    const unsigned parent = addBox("#304050", {-50, -50, -50});
    auto* group = new Visual(Scene::GetVisual(parent));
    SceneCore::Get()->visuals.enter(group);
    const auto body = test::addModelBody(test::meshedBox(60, 60, 60), "hover-child");
    SolidVisual::Build(group, body.get(), body->getShape());
    Scene::GetVisual(parent)->setVisible(false, false);

    SetOutlined({group->getId()});

    EXPECT_GT(whiteShare(render(lookingAtOrigin(400))), 0.0015);
}

TEST_F(HoverOutlinePicture, DiffersFromThatOfWhatIsSelected)
{
    const unsigned hovered = addBox("#304050", {-140, -50, -50});
    const unsigned selected = addBox("#304050", {40, -50, -50});
    scene.setVisualsSelected({selected});
    scene.setBorderHighlightEnabled(true);
    SetOutlined({hovered});
    SetDepthShade(true);

    EXPECT_TRUE(matchesBaseline(render({{0, -400, 250}, {0, 0, 0}, {0, 0, 1}}), "hovered_and_selected"));
}

TEST_F(HoverOutlinePicture, WhatHasNoVisualIsPassedOver)
{
    const unsigned box = addBox("#304050", {-50, -50, -50});
    SetOutlined({4000000000u, box});
    EXPECT_GT(whiteShare(render(lookingAtOrigin(400))), 0.003);

    scene.removeVisual(box);
    EXPECT_LT(whiteShare(render(lookingAtOrigin(400))), 0.001) << "it died meanwhile";
}

TEST_F(HoverOutlinePicture, ChangeAsksForAFrame)
{
    int asked = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&asked] { ++asked; });
    SetOutlined({17});
    SetOutlined({17});
    EXPECT_EQ(asked, 1);
    SetOutlined({});
    EXPECT_EQ(asked, 2);
}

TEST_F(HoverOutlinePicture, FollowsToPicturesOfOtherSizes)
{
    const unsigned box = addBox("#304050", {-50, -50, -50});
    SetOutlined({box});
    for (const unsigned width : {500u, 250u, 400u}) {
        setSize(width, 300);
        EXPECT_GT(whiteShare(render(lookingAtOrigin(400))), 0.0025) << width;
    }
}

// Background

TEST_F(ViewLook, BackgroundGoesFromItsUpperToItsLowerColour)
{
    SetBackground({0.2f, 0.4f, 0.6f}, {0.8f, 0.6f, 0.2f});
    const Picture picture = render(lookingAtOrigin(400));

    EXPECT_TRUE(isNear(picture.at(200, 0), {51, 102, 153}, 1));
    EXPECT_TRUE(isNear(picture.at(200, 299), {204, 153, 51}, 1));
    EXPECT_TRUE(isNear(picture.at(10, 150), {128, 128, 102}, 2));
}

TEST_F(ViewLook, BackgroundLiesBehindAllElse)
{
    add(test::meshedBox(100, 100, 100), "box");
    const Picture before = render(lookingAtOrigin(400));
    SetBackground({0.9f, 0.1f, 0.1f}, {0.9f, 0.1f, 0.1f});
    const Picture with = render(lookingAtOrigin(400));

    EXPECT_EQ(test::difference(pixelAt(before, {90, 10, 50}), pixelAt(with, {90, 10, 50})), 0);
    EXPECT_TRUE(isNear(with.at(2, 2), {230, 26, 26}, 1));
    ResetBackground();
    EXPECT_EQ(test::largestDifference(before, render(lookingAtOrigin(400))), 0);
}

TEST_F(ViewLook, BackgroundStaysWholeWhereTheViewShowsWires)
{
    SetBackground({0.9f, 0.1f, 0.1f}, {0.9f, 0.1f, 0.1f});
    scene.setDisplayMode(Scene::DisplayMode::Wire);
    const Picture picture = render(lookingAtOrigin(400));
    scene.setDisplayMode(Scene::DisplayMode::Shaded);
    drain();
    EXPECT_TRUE(isNear(picture.at(137, 83), {230, 26, 26}, 1));
}

} // namespace
} // namespace vrk::visual
