#include "scene/Scene.h"
#include "scene/ViewLook.h"
#include "support/SceneFixture.h"
#include "view/Camera.h"
#include "visual/SolidVisual.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <TopExp_Explorer.hxx>

namespace vrk::visual {
namespace {

using test::Picture;
using test::Pixel;
using test::View;

/// Between the walls of a box of 200 around the origin, where only their backs are seen.
const View fromInside{{0, 0, 0}, {0, 100, 0}, {0, 0, 1}};
const View fromOutside{{150, -300, 200}, {0, 0, 0}, {0, 0, 1}};

class BackFaces : public test::RenderTest {
protected:
    BackFaces() { setSize(120, 90, 0); }
    ~BackFaces() override { SetDepthShade(false); }

    SolidVisual* add(const TopoDS_Shape& shape, const std::string& uri)
    {
        BRepMesh_IncrementalMesh(shape, 0.5, false, 0.3, false);
        const auto body = test::addModelBody(shape, "back-faces-" + uri, "#40C060");
        SolidVisual::Build(world, body.get(), shape);
        return static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    }
    static TopoDS_Shape box() { return BRepPrimAPI_MakeBox(gp_Pnt(-100, -100, -100), gp_Pnt(100, 100, 100)).Shape(); }
    bool areBacksSeen() { return isGreen(render(fromInside).at(60, 45)); }
    static bool isGreen(const Pixel& pixel) { return pixel.g > pixel.r + 15 && pixel.g > pixel.b + 15; }
};

TEST_F(BackFaces, OfAClosedSolidAreLeftOut)
{
    add(box(), "box");

    EXPECT_FALSE(areBacksSeen());
    EXPECT_TRUE(isGreen(render(fromOutside).at(60, 45)));
}

TEST_F(BackFaces, OfAClosedSolidAreLeftOutInEachState)
{
    const unsigned id = add(box(), "states")->getId();

    scene.setVisualsSelected({id});
    EXPECT_EQ(test::difference(render(fromInside).at(60, 45), render(fromInside).at(1, 1)), 0);
    scene.clearSelectedVisuals();
    scene.setVisualHighlighted(id);
    EXPECT_EQ(test::difference(render(fromInside).at(60, 45), render(fromInside).at(1, 1)), 0);
    scene.clearHighlightedVisual();
}

TEST_F(BackFaces, OfAClosedSolidAreLeftOutWithTheShadeToo)
{
    add(box(), "shade");
    SetDepthShade(true);

    EXPECT_FALSE(areBacksSeen());
    EXPECT_TRUE(isGreen(render(fromOutside).at(60, 45)));
}

TEST_F(BackFaces, OfASurfaceAreSeen)
{
    const TopoDS_Shape solid = box();
    add(TopExp_Explorer(solid, TopAbs_SHELL).Current(), "shell");

    EXPECT_TRUE(areBacksSeen());
}

TEST_F(BackFaces, OfASolidInsideOutAreSeen)
{
    add(box().Reversed(), "inside-out");

    EXPECT_TRUE(areBacksSeen());
    EXPECT_TRUE(isGreen(render(fromOutside).at(60, 45)));
}

TEST_F(BackFaces, AreSeenWhileFacesAreHidden)
{
    SolidVisual* solid = add(box(), "hidden");
    ASSERT_FALSE(areBacksSeen());

    solid->setFaceVisible(3, false); // in front of the eye there is another

    EXPECT_TRUE(areBacksSeen());
    solid->setFaceVisible(3, true);
    EXPECT_FALSE(areBacksSeen());
}

TEST_F(BackFaces, AreSeenThroughWhatIsTransparent)
{
    SolidVisual* solid = add(box(), "glass");
    solid->useNamedMaterial("TransBody");

    EXPECT_NE(test::difference(render(fromInside).at(60, 45), render(fromInside).at(1, 1)) + areBacksSeen(), 0);
}

TEST_F(BackFaces, OfAMirroredPlaceAreThoseThatTurnAway)
{
    SolidVisual* solid = add(box(), "mirrored");
    solid->getSceneNode()->setScale(-1, 1, 1);

    EXPECT_FALSE(areBacksSeen());
    EXPECT_TRUE(isGreen(render(fromOutside).at(60, 45)));
}

TEST_F(BackFaces, OfWireFramesAreSeen)
{
    const unsigned id = add(box(), "wire")->getId();
    const auto drawn = [this] {
        const Picture picture = render({{0, -500, 0}, {0, 0, 0}, {0, 0, 1}});
        int count = 0;
        for (unsigned y = 0; y < picture.height; ++y)
            for (unsigned x = 0; x < picture.width; ++x)
                count += isGreen(picture.at(x, y)) ? 1 : 0;
        return count;
    };
    scene.setDisplayMode(Scene::DisplayMode::Wire);
    const int closed = drawn();
    scene.removeVisual(id);
    const TopoDS_Shape solid = box();
    add(TopExp_Explorer(solid, TopAbs_SHELL).Current(), "wire-shell");
    const int open = drawn();
    scene.setDisplayMode(Scene::DisplayMode::ShadedWithEdges);

    EXPECT_GT(closed, 0);
    EXPECT_EQ(closed, open);
}

} // namespace
} // namespace vrk::visual
