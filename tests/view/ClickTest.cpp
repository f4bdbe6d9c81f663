#include "ViewTools.h"

#include "platform/layout/Body.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "visual/CurveVisual.h"
#include "visual/Edges.h"

#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>

namespace vrk::visual {
namespace {

using test::isNear;
using test::Pixel;

const test::View above{{0, 0, 400}, {0, 0, 0}, {0, 1, 0}};
const rob::Posf onTop(20, 5, 80);

/// What an application does with a click: a pick, and then what the scene offers for what was found.
class Click : public test::RenderTest {
protected:
    Click()
    {
        box = test::addPickedBox(world, {-50, -30, 0}, {100, 100, 80});
        unmarked = colorOnTop();
        pick = pickAt(onTop);
    }

    Pixel colorOnTop()
    {
        const test::Picture picture = render(above);
        return pixelAt(picture, onTop);
    }
    static selection::Result pickAt(const rob::Posf& point)
    {
        selection::VisualSelection::Get()->update();
        const rob::Vec2f pixel = test::pixelOf(*Camera::Get(), point);
        return selection::VisualSelection::Get()->select(pixel.x, pixel.y);
    }
    unsigned pickedFace() const { return box->getFaceIndex(TopoDS::Face(pick.face)); }

    SolidVisual* box;
    Pixel unmarked;
    selection::Result pick;
};

TEST_F(Click, FaceUnderTheMouseIsSelectedAndClearedAgain)
{
    ASSERT_EQ(pick.visual, box);
    ASSERT_NE(pickedFace(), 0u);

    scene.selectBaseFace(pick.visual->getId(), pickedFace());
    const Pixel base = colorOnTop();
    EXPECT_GT(base.g, base.r + 40);
    EXPECT_GT(base.g, base.b + 20);
    EXPECT_TRUE(scene.faceIsSelected(box, pickedFace()));

    scene.clearSelectedFace(pick.visual->getId(), pickedFace());
    EXPECT_TRUE(isNear(colorOnTop(), unmarked));

    scene.selectSideFace(pick.visual->getId(), pickedFace());
    const Pixel side = colorOnTop();
    EXPECT_GT(side.b, side.r + 40);
    EXPECT_GT(side.b, side.g + 20);
}

TEST_F(Click, OnlyTheFaceUnderTheMouseIsHighlighted)
{
    scene.highlightFace(box, pickedFace());
    const Pixel lit = colorOnTop();
    EXPECT_GT(lit.r, unmarked.r + 15);

    scene.clearHighlightedVisual();
    EXPECT_TRUE(isNear(colorOnTop(), unmarked));
}

TEST_F(Click, BodyUnderTheMouseIsSelected)
{
    scene.setVisualSelected(pick.visual);

    EXPECT_GT(difference(colorOnTop(), unmarked), 10) << "a tint; the outline tells more";
    EXPECT_TRUE(scene.isSelected(box));
    scene.setBorderHighlightEnabled(false);
}

TEST_F(Click, EdgeOfACurveIsHighlightedAheadOfTheFaceThatItLiesOn)
{
    const TopoDS_Edge edge = test::straightEdge({-40, 5, 80}, {40, 5, 80});
    const auto body = test::addModelBody(edge, "clicked curve");
    CurveVisual::Build(world, body.get(), edge);
    Visual* curve = Scene::GetVisual(body->getId());
    pick = pickAt(onTop);
    ASSERT_EQ(pick.visual, curve);

    scene.highlightEdge(curve, TopoDS::Edge(pick.edge));
    drain();
    EXPECT_EQ(test::childrenOfType(*curve, VisualType::Edge).size(), 2u) << "its own, and the highlight over it";

    scene.clearHighlightedVisual();
    drain();
    EXPECT_EQ(test::childrenOfType(*curve, VisualType::Edge).size(), 1u);
}

TEST_F(Click, RemovedBodyIsNoLongerFound)
{
    scene.setVisualHighlighted(pick.visual);
    scene.removeVisual(box->getId());
    drain();

    EXPECT_FALSE(pickAt(onTop).hit);
    scene.clearHighlightedVisual();
    EXPECT_NO_THROW(drain());
}

} // namespace
} // namespace vrk::visual
