#include "scene/Scene.h"
#include "scene/ViewLook.h"
#include "support/SceneFixture.h"
#include "visual/SolidVisual.h"

namespace vrk::visual {
namespace {

using rob::Posf;
using test::Picture;
using test::View;

const View fromAbove{{0, -10, 800}, {0, 0, 0}, {0, 1, 0}};
const View fromBelow{{0, -10, -800}, {0, 0, 0}, {0, 1, 0}};

constexpr int seen = 15; // of a sum of colours of some 340

class GroundShadow : public test::RenderTest {
protected:
    GroundShadow() { setSize(300, 300, 0); }
    ~GroundShadow() override { RemoveGroundShadow(); }

    SolidVisual* add(const Posf& at, const TopoDS_Shape& shape = test::meshedBox(100, 100, 20))
    {
        const auto body = test::addModelBody(shape, "shadow-" + std::to_string(++count), "#C8CCD0");
        SolidVisual::Build(world, body.get(), shape);
        auto* visual = static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
        visual->setPosition(at);
        return visual;
    }
    /// How much darker than the plain background the ground is there.
    int darkness(const Picture& picture, const Posf& place)
    {
        const test::Pixel plain = picture.at(1, 1), pixel = pixelAt(picture, place);
        return plain.r + plain.g + plain.b - pixel.r - pixel.g - pixel.b;
    }
    Picture taken(const View& view = fromAbove)
    {
        TakeGroundShadow();
        return render(view);
    }

private:
    int count = 0;
};

TEST_F(GroundShadow, GroundIsDarkBesideWhatStandsOnIt)
{
    add({-50, -50, 0});

    const Picture with = taken();

    for (const Posf& place : {Posf(56, 0, 0), Posf(-56, 0, 0), Posf(0, 56, 0), Posf(0, -56, 0)})
        EXPECT_GT(darkness(with, place), seen) << place.x << ' ' << place.y;
    EXPECT_LT(darkness(with, {90, 90, 0}), 10);
}

TEST_F(GroundShadow, LiesBelowWhatThrowsIt)
{
    add({-150, 50, 0}); // in one quarter of the ground
    add({100, 100, 200}, test::meshedBox(40, 40, 40));

    const Picture with = taken();

    EXPECT_GT(darkness(with, {-100, 44, 0}), seen);
    EXPECT_GT(darkness(with, {-44, 100, 0}), seen);
    EXPECT_LT(darkness(with, {-100, -100, 0}), 6) << "not upside down";
    EXPECT_LT(darkness(with, {100, -100, 0}), 6);
}

TEST_F(GroundShadow, BodiesLookAsBefore)
{
    add({-50, -50, 0});
    const Picture before = render(fromAbove);

    const Picture with = taken();

    EXPECT_EQ(test::difference(pixelAt(with, {0, 0, 20}), pixelAt(before, {0, 0, 20})), 0);
    EXPECT_GT(test::largestDifference(before, with), 10);
    RemoveGroundShadow();
    EXPECT_EQ(test::largestDifference(before, render(fromAbove)), 0);
}

TEST_F(GroundShadow, GroundIsWhereTheLowestStands)
{
    add({-50, -50, -300});
    const Picture with = taken();

    EXPECT_GT(darkness(with, {56, 0, -300}), seen);
}

TEST_F(GroundShadow, IsNotSeenFromBelow)
{
    add({-50, -50, 0});
    const Picture before = render(fromBelow);

    EXPECT_EQ(test::largestDifference(before, taken(fromBelow)), 0);
}

TEST_F(GroundShadow, StaysUntilItIsTakenAnew)
{
    SolidVisual* box = add({-50, -50, 0});
    taken();
    box->setPosition({100, -50, 0});
    const Picture moved = render(fromAbove);
    EXPECT_GT(darkness(moved, {0, 0, 0}), seen) << "where it stood";

    const Picture anew = taken();
    EXPECT_LT(darkness(anew, {0, 0, 0}), 6);
    EXPECT_GT(darkness(anew, {94, 0, 0}), seen);
}

TEST_F(GroundShadow, WhatIsHiddenOrSeenThroughThrowsNone)
{
    SolidVisual* box = add({-50, -50, 0});
    const Picture with = taken();
    ASSERT_GT(darkness(with, {56, 0, 0}), seen);

    box->setVisible(false, true);
    EXPECT_EQ(darkness(taken(), {56, 0, 0}), 0);

    box->setVisible(true, true);
    box->useNamedMaterial("TransBody");
    EXPECT_EQ(darkness(taken(), {56, 0, 0}), 0);
}

TEST_F(GroundShadow, NothingThrowsNone)
{
    const Picture before = render(fromAbove);
    EXPECT_EQ(test::largestDifference(before, taken()), 0);

    const unsigned box = add({-50, -50, 0})->getId();
    EXPECT_GT(test::largestDifference(before, taken()), 10);
    scene.removeVisual(box);
    scene.processMsgs();
    EXPECT_EQ(test::largestDifference(before, taken()), 0) << "it died meanwhile";
}

TEST_F(GroundShadow, FollowsToStationsOfAnotherShape)
{
    add({-50, -50, 0});
    taken();
    add({-50, 200, 0});

    const Picture with = taken();

    EXPECT_GT(darkness(with, {56, 0, 0}), seen);
    EXPECT_GT(darkness(with, {0, 194, 0}), seen);
}

TEST_F(GroundShadow, LooksAsItDid)
{
    setSize(400, 300, 4);
    add({-100, -60, 0}, test::meshedBox(80, 80, 30));
    add({-80, -40, 30}, test::meshedBox(40, 40, 90));
    add({20, -20, 60}, test::meshedBox(120, 80, 10));
    for (const Posf& leg : {Posf(22, -18, 0), Posf(132, -18, 0), Posf(22, 52, 0), Posf(132, 52, 0)})
        add(leg, test::meshedBox(6, 6, 60));
    TakeGroundShadow();

    EXPECT_TRUE(matchesBaseline(render({{150, -350, 260}, {20, 0, 20}, {0, 0, 1}}), "ground_shadow"));
}

} // namespace
} // namespace vrk::visual
