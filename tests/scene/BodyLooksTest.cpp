#include "visual/ScanClouds.h"

#include "platform/broker/SignalBroker.h"
#include "scene/Scene.h"
#include "scene/ViewLook.h"
#include "support/SceneFixture.h"
#include "visual/PointCloudVisual.h"
#include "visual/SolidVisual.h"

#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <Ogre.h>

#include <algorithm>

namespace vrk::visual {
namespace {

using rob::Posf;
using test::largestDifference;
using test::lookingAtOrigin;
using test::Picture;
using test::Pixel;
using test::View;

const View front{{0, -400, 0}, {0, 0, 0}, {0, 0, 1}};
const View aslant{{180, -260, 260}, {0, 0, 0}, {0, 0, 1}};

/// On white, so that all that is drawn is darker.
class BodyLooks : public test::RenderTest {
protected:
    BodyLooks() { SetBackground({1, 1, 1}, {1, 1, 1}); }
    ~BodyLooks() override
    {
        SetLineLook(LineLook::None);
        EndGhosts();
        SetDepthShade(false);
        SetOutlined({});
        ResetBackground();
        scene.setBorderHighlightEnabled(false);
    }

    SolidVisual* add(const TopoDS_Shape& shape, const std::string& uri, const Posf& at,
                     const std::string& color = "#C8CCD0")
    {
        const auto body = test::addModelBody(shape, uri, color);
        SolidVisual::Build(world, body.get(), shape);
        auto* solid = static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
        solid->setPosition(at);
        return solid;
    }
    SolidVisual* addBox(const std::string& uri, const Posf& at, const std::string& color = "#C8CCD0")
    {
        return add(test::meshedBox(100, 100, 100), uri, at, color);
    }
    /// Of radius 60 and height 120, around the origin.
    SolidVisual* addCylinder()
    {
        return add(test::meshed(BRepPrimAPI_MakeCylinder(60, 120).Shape()), "cylinder", {0, 0, -60});
    }
    /// The pixels of a row in `[from, to)` that are clearly darker than white: in coarse pictures lines are pale.
    static int darkInRow(const Picture& picture, unsigned row, unsigned from, unsigned to)
    {
        int count = 0;
        for (unsigned x = from; x < to; ++x)
            count += picture.at(x, row).g < 180 ? 1 : 0;
        return count;
    }
    static bool isMagenta(const Pixel& pixel) { return pixel.r > pixel.g + 60 && pixel.b > pixel.g + 30; }
};

// Lines

TEST_F(BodyLooks, RoundBodyHasItsOutlineAndNothingWithinIt)
{
    addCylinder();
    SetLineLook(LineLook::Visible);
    const Picture picture = render(front);

    // 60 at a distance of 400, and the seam of the cylinder, which is paler, to the right of the middle at most
    const unsigned middle = 150;
    EXPECT_GE(darkInRow(picture, middle, 80, 190), 1) << "the left side";
    EXPECT_GE(darkInRow(picture, middle, 210, 320), 1) << "the right side";
    EXPECT_LE(darkInRow(picture, middle, 0, 400), 6);
    EXPECT_TRUE(isNear(picture.at(180, 150), {255, 255, 255}, 0)) << "the face is the background";
}

TEST_F(BodyLooks, RoundBodyWithoutAnyEdgeHasItsOutline)
{
    add(test::meshed(BRepPrimAPI_MakeSphere(70).Shape()), "ball", {0, 0, 0});
    SetLineLook(LineLook::Visible);
    for (const unsigned width : {200u, 400u, 1600u}) {
        setSize(width, 3 * width / 4);
        const Picture picture = render(front);
        for (const unsigned row : {width * 5 / 16, width * 3 / 8, width * 7 / 16}) {
            EXPECT_GE(darkInRow(picture, row, 0, width / 2 - width / 10), 1) << width;
            EXPECT_GE(darkInRow(picture, row, width / 2 + width / 10, width), 1) << width;
            EXPECT_LE(darkInRow(picture, row, 0, width), 4 + static_cast<int>(width / 200)) << width;
        }
    }
}

TEST_F(BodyLooks, BodyBeforeAnotherHasItsOutline)
{
    add(test::meshedBox(600, 10, 600), "wall", {-300, 200, -300});
    add(test::meshed(BRepPrimAPI_MakeSphere(70).Shape()), "ball", {0, 0, 0});
    SetLineLook(LineLook::Visible);
    const Picture picture = render(front);
    EXPECT_GE(darkInRow(picture, 150, 80, 190), 1);
    EXPECT_GE(darkInRow(picture, 150, 210, 320), 1);
}

TEST_F(BodyLooks, PlanesHaveNoLinesHoweverTheyAreInclined)
{
    add(test::meshedBox(4000, 4000, 1), "floor", {-2000, -2000, 0});
    SetLineLook(LineLook::Visible);
    for (const float height : {15.0f, 60.0f, 400.0f}) {
        const Picture picture = render({{0, -300, height}, {0, 0, 0}, {0, 0, 1}});
        for (unsigned y = 180; y < 300; ++y)
            ASSERT_EQ(darkInRow(picture, y, 0, 400), 0) << height << ", row " << y;
    }
}

TEST_F(BodyLooks, BodiesHideLinesBehindThem)
{
    addBox("behind", {-50, 100, -50});
    SetLineLook(LineLook::Visible);
    const Picture alone = render(front);
    add(test::meshedBox(300, 10, 200), "before", {-150, 0, -100});
    const Picture hidden = render(front);

    EXPECT_GE(darkInRow(alone, 150, 120, 200), 1) << "an edge of the box";
    for (unsigned y = 100; y < 200; ++y)
        ASSERT_EQ(darkInRow(hidden, y, 120, 280), 0) << y;
}

TEST_F(BodyLooks, HiddenEdgesAreDashed)
{
    setSize(1600, 1200);
    addBox("behind", {-50, 100, -50});
    SetLineLook(LineLook::Visible);
    const Picture alone = render(front);
    unsigned column = 0; // of the left edge of its front
    while (column < 800 && alone.at(column, 600).g > 128)
        ++column;
    ASSERT_LT(column, 800u);
    add(test::meshedBox(300, 10, 200), "before", {-150, 0, -100});
    const Picture without = render(front);
    SetLineLook(LineLook::WithHidden);
    const Picture with = render(front);

    const auto darkest = [column](const Picture& picture, unsigned row) {
        int least = 255;
        for (unsigned x = column - 2; x <= column + 2; ++x)
            least = std::min<int>(least, picture.at(x, row).g);
        return least;
    };
    int dashes = 0;
    int gaps = 0;
    for (unsigned row = 520; row < 680; ++row) {
        EXPECT_GE(darkest(without, row), 253) << row;
        dashes += darkest(with, row) < 215 ? 1 : 0;
        gaps += darkest(with, row) > 250 ? 1 : 0;
    }
    EXPECT_GT(dashes, 60);
    EXPECT_GT(gaps, 40);
}

TEST_F(BodyLooks, LinesAreLightOnADarkBackground)
{
    addCylinder();
    SetBackground({0.02f, 0.02f, 0.02f}, {0.1f, 0.1f, 0.1f});
    SetLineLook(LineLook::Visible);
    const Picture picture = render(front);
    int light = 0;
    for (unsigned x = 0; x < 400; ++x)
        light += picture.at(x, 150).g > 90 ? 1 : 0;
    EXPECT_GE(light, 2);
    ResetBackground();
    Pixel darkest{255, 255, 255};
    const Picture onGrey = render(front);
    for (unsigned x = 0; x < 400; ++x)
        darkest = std::min(darkest, onGrey.at(x, 150), [](const Pixel& a, const Pixel& b) { return a.g < b.g; });
    EXPECT_LT(darkest.g, 80) << "on the grey of the start, 115, they are dark";
}

TEST_F(BodyLooks, SelectedBodyHasItsOutlineAndLinesOfItsColour)
{
    const SolidVisual* box = addBox("box", {-50, -50, -50});
    SetLineLook(LineLook::Visible);
    const Picture plain = render(aslant);
    scene.setVisualsSelected({box->getId()});
    scene.setBorderHighlightEnabled(true);
    const Picture selected = render(aslant);

    const auto magenta = [](const Picture& picture) {
        int count = 0;
        for (unsigned y = 0; y < picture.height; ++y)
            for (unsigned x = 0; x < picture.width; ++x)
                count += isMagenta(picture.at(x, y)) ? 1 : 0;
        return count;
    };
    EXPECT_EQ(magenta(plain), 0);
    EXPECT_GT(magenta(selected), 1000);
    const Pixel onEdge = pixelAt(selected, {50, 0, 50});
    EXPECT_TRUE(isMagenta(onEdge)) << "an edge within the outline";
    EXPECT_TRUE(isNear(pixelAt(selected, {0, 0, 50}), {255, 255, 255}, 0)) << "the face";

    scene.clearSelections();
    drain();
    scene.setVisualHighlighted(box->getId());
    const Pixel highlighted = pixelAt(render(aslant), {50, 0, 50});
    EXPECT_GT(highlighted.b, highlighted.r + 60);
    scene.clearHighlightedBody();
    EXPECT_EQ(largestDifference(plain, render(aslant)), 0);
}

TEST_F(BodyLooks, SolidWithAMarkedFaceHasItsFaces)
{
    const SolidVisual* box = addBox("box", {-50, -50, -50});
    SetLineLook(LineLook::Visible);
    const Picture plain = render(aslant);
    scene.selectBaseFace(box->getId(), 6);
    const Picture marked = render(aslant);
    scene.clearSelectedFaces();
    const Picture after = render(aslant);

    EXPECT_GT(test::difference(pixelAt(marked, {10, 5, 50}), pixelAt(plain, {10, 5, 50})), 30);
    EXPECT_EQ(largestDifference(plain, after), 0);
}

TEST_F(BodyLooks, CollidingBodyKeepsItsColour)
{
    const SolidVisual* box = addBox("box", {-50, -50, -50});
    SetLineLook(LineLook::Visible);
    SetGhostsExcept({});
    scene.setCollision(box->getId(), true);
    const Picture picture = render(aslant);
    const Pixel pixel = pixelAt(picture, {10, 5, 50});
    EXPECT_GT(pixel.r, pixel.g + 100);
    scene.setCollision(box->getId(), false);
    EXPECT_LT(pixelAt(render(aslant), {10, 5, 50}).r, pixelAt(picture, {10, 5, 50}).g + 256);
}

class EndedLook : public BodyLooks, public testing::WithParamInterface<bool> {};

TEST_P(EndedLook, LeavesThePictureAndMaterialsAsTheyWere)
{
    const SolidVisual* box = addBox("box", {-50, -50, -50}, "#8090A0");
    addBox("other", {20, 60, -50}, "#D08030");
    scene.setVisualsSelected({box->getId()});
    scene.setBorderHighlightEnabled(GetParam());
    SetDepthShade(GetParam());
    const Picture before = render(aslant);
    const std::string material = box->getEntity()->getSubEntity(0)->getMaterialName();

    for (const LineLook look : {LineLook::Visible, LineLook::WithHidden}) {
        SetLineLook(look);
        EXPECT_GT(largestDifference(before, render(aslant)), 40);
        SetGhostsExcept({box->getId()});
        EXPECT_GT(largestDifference(before, render(aslant)), 40);
        SetLineLook(LineLook::None);
        EXPECT_GT(largestDifference(before, render(aslant)), 20);
        EXPECT_EQ(box->getEntity()->getSubEntity(0)->getMaterialName(), material);
        EndGhosts();
        EXPECT_EQ(largestDifference(before, render(aslant)), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(OutlineAndShade, EndedLook, testing::Bool(),
                         [](const auto& info) { return info.param ? "With" : "Without"; });

TEST_F(BodyLooks, OutlinesAreTheSameWithThatOfWhatIsSelected)
{
    addCylinder();
    SetDepthShade(true);
    SetLineLook(LineLook::Visible);
    const Picture before = render(aslant);
    scene.setBorderHighlightEnabled(true);
    EXPECT_EQ(largestDifference(before, render(aslant)), 0) << "nothing is selected";
    scene.setBorderHighlightEnabled(false);
    EXPECT_EQ(largestDifference(before, render(aslant)), 0);
}

TEST_F(BodyLooks, CloudsStayAsTheyAreAmongLines)
{
    const auto node = test::addModelCloud(test::scanOfBallOnFloor(20000).points);
    PointCloudVisual::Build(world, node.get());
    const Picture before = render(aslant);
    SetLineLook(LineLook::WithHidden);
    EXPECT_EQ(largestDifference(before, render(aslant)), 0);
}

TEST_F(BodyLooks, NeitherLinesNorGhostsStandOnAShadow)
{
    const SolidVisual* box = addBox("box", {-50, -50, 40});
    add(test::meshedBox(20, 20, 20), "foot", {-10, -10, -50});
    for (const bool areLines : {true, false}) {
        RemoveGroundShadow();
        const Picture plain = render(aslant);
        SetLineLook(areLines ? LineLook::Visible : LineLook::None);
        if (!areLines)
            SetGhostsExcept({box->getId()});
        const Picture without = render(aslant);
        TakeGroundShadow();
        EXPECT_EQ(largestDifference(without, render(aslant)), 0) << areLines;
        SetLineLook(LineLook::None);
        EndGhosts();
        EXPECT_GT(largestDifference(plain, render(aslant)), 5) << "it comes back";
    }
    RemoveGroundShadow();
}

TEST_F(BodyLooks, ChangeAsksForAFrame)
{
    int asked = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&asked] { ++asked; });
    SetLineLook(LineLook::Visible);
    SetLineLook(LineLook::Visible);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(GetLineLook(), LineLook::Visible);
    SetGhostsExcept({17});
    SetGhostsExcept({17});
    EXPECT_EQ(asked, 2);
    SetGhostsExcept({});
    EXPECT_EQ(asked, 3);
    EXPECT_TRUE(HasGhosts());
    EndGhosts();
    EndGhosts();
    EXPECT_EQ(asked, 4);
    EXPECT_FALSE(HasGhosts());
}

TEST_F(BodyLooks, LinesLookAsTheyDid)
{
    setSize(400, 300, 4);
    addBox("box", {-120, -50, -50});
    add(test::meshed(BRepPrimAPI_MakeCylinder(40, 110).Shape()), "pillar", {60, 0, -50});
    add(test::meshed(BRepPrimAPI_MakeSphere(30).Shape()), "ball", {10, -90, -20});
    SetLineLook(LineLook::WithHidden);
    EXPECT_TRUE(matchesBaseline(render(aslant), "lines_of_bodies"));
}

// Ghosts

TEST_F(BodyLooks, NearestGhostIsSeenWhateverTheOrder)
{
    const auto drawn = [this](bool isNearFirst) {
        std::vector<SolidVisual*> boxes;
        for (const bool isNear : {isNearFirst, !isNearFirst})
            boxes.push_back(isNear ? addBox("near", {-70, -80, -50}) : addBox("far", {-20, 60, -50}));
        const Picture picture = render(front);
        for (SolidVisual* box : boxes)
            scene.deleteVisual(box);
        return picture;
    };
    SetGhostsExcept({});
    EXPECT_LE(largestDifference(drawn(true), drawn(false)), 1) << "of rounding, where edges lie over each other";
}

TEST_F(BodyLooks, GhostBehindAGhostIsNotSeen)
{
    addBox("near", {-50, -80, -50});
    SetGhostsExcept({});
    const Picture alone = render(front);
    addBox("far", {-20, 60, -20}, "#301010");
    const Picture both = render(front);

    EXPECT_EQ(test::difference(alone.at(200, 150), both.at(200, 150)), 0);
    EXPECT_GT(test::difference(alone.at(200, 150), {255, 255, 255}), 3) << "a ghost is seen";
}

TEST_F(BodyLooks, WhatIsWholeIsSeenThroughGhosts)
{
    const SolidVisual* red = addBox("red", {-50, 60, -50}, "#D02020");
    const Picture alone = render(front);
    add(test::meshedBox(300, 10, 200), "before", {-150, 0, -100});
    SetGhostsExcept({red->getId()});
    const Picture through = render(front);

    EXPECT_TRUE(isNear(through.at(200, 150), alone.at(200, 150), 60));
    EXPECT_GT(through.at(200, 150).r, through.at(200, 150).g + 50);
}

TEST_F(BodyLooks, WhatIsWholeHidesGhosts)
{
    const SolidVisual* red = addBox("red", {-50, -80, -50}, "#D02020");
    SetGhostsExcept({red->getId()});
    SetDepthShade(true);
    const Picture alone = render(front);
    addBox("behind", {-30, 60, -30});
    EXPECT_EQ(largestDifference(alone, render(front)), 0);
}

TEST_F(BodyLooks, PartsOfWhatIsWholeAreWhole)
{
    const SolidVisual* parent = addBox("parent", {-120, 0, -50}, "#D02020");
    SolidVisual* child = addBox("child", {0, 0, 0}, "#D02020");
    child->attachTo(Scene::GetVisual(parent->getId()));
    child->setPosition({130, 0, 0});
    const Picture before = render(front);
    SetGhostsExcept({parent->getId(), 4000000000u});
    EXPECT_EQ(largestDifference(before, render(front)), 0);
    SetGhostsExcept({child->getId()});
    const Picture picture = render(front);
    EXPECT_GT(test::difference(pixelAt(picture, {-70, 0, 0}), pixelAt(before, {-70, 0, 0})), 40);
    EXPECT_EQ(test::difference(pixelAt(picture, {60, 0, 0}), pixelAt(before, {60, 0, 0})), 0);
}

TEST_F(BodyLooks, CloudsAreGhosts)
{
    const auto node = test::addModelCloud(test::scanOfBallOnFloor(50000).points);
    PointCloudVisual::Build(world, node.get());
    const Picture before = render(aslant);
    SetGhostsExcept({});
    const Picture ghost = render(aslant);
    SetGhostsExcept({node->getId()});

    EXPECT_GT(ghost.at(200, 150).g, before.at(200, 150).g + 30);
    EXPECT_LT(ghost.at(200, 150).g, 254);
    EXPECT_EQ(largestDifference(before, render(aslant)), 0);
}

TEST_F(BodyLooks, GhostsLookAsTheyDid)
{
    setSize(400, 300, 4);
    const SolidVisual* box = addBox("box", {-90, -50, -50}, "#D08030");
    add(test::meshed(BRepPrimAPI_MakeCylinder(40, 110).Shape()), "pillar", {60, 0, -50});
    add(test::meshed(BRepPrimAPI_MakeSphere(50).Shape()), "ball", {10, -90, -20});
    SetGhostsExcept({box->getId()});
    SetBackground({0.30f, 0.34f, 0.39f}, {0.59f, 0.63f, 0.68f});
    EXPECT_TRUE(matchesBaseline(render(aslant), "ghosts"));
}

} // namespace
} // namespace vrk::visual
