#include "handles/UVIndicatorVisual.h"

#include "HandleFixture.h"

#include "platform/common/Logger.h"
#include "platform/geometry/ColorText.h"
#include "support/ThrowsExactly.h"

#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRep_Builder.hxx>
#include <Geom_BezierCurve.hxx>
#include <Geom_ConicalSurface.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Line.hxx>
#include <Geom_Plane.hxx>
#include <Geom_RectangularTrimmedSurface.hxx>
#include <Geom_SurfaceOfLinearExtrusion.hxx>
#include <Geom_SurfaceOfRevolution.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <TopoDS_Face.hxx>

#include <numbers>

namespace vrk::visual {
namespace {

using test::throwsExactly;

constexpr double tolerance = 1e-9; // of the faces

/// x to the right from (100, 20, 5), y into -z: u from 0 to 40, v from 10 to 30.
TopoDS_Face uprightFace()
{
    const Handle(Geom_Plane) plane = new Geom_Plane(gp_Ax3({100, 20, 5}, {0, 1, 0}, {1, 0, 0}));
    return BRepBuilderAPI_MakeFace(plane, 0, 40, 10, 30, tolerance).Face();
}

/// All of a surface; by hand, since the builders of faces refuse what is degenerate.
TopoDS_Face faceOf(const Handle(Geom_Surface) & surface)
{
    TopoDS_Face face;
    BRep_Builder().MakeFace(face, surface, tolerance);
    return face;
}

/// From the origin: u from 0 to 10 along one direction, v from 0 to 20 along another.
TopoDS_Face leaningFace(const gp_Dir& alongU, const gp_Dir& alongV)
{
    const Handle(Geom_Curve) line = new Geom_Line(gp_Pnt(), alongU);
    return faceOf(
        new Geom_RectangularTrimmedSurface(new Geom_SurfaceOfLinearExtrusion(line, alongV), 0.0, 10.0, 0.0, 20.0));
}

/// u goes round the tip of a cone, which is in the middle.
TopoDS_Face faceWithoutU()
{
    return faceOf(new Geom_RectangularTrimmedSurface(new Geom_ConicalSurface(gp_Ax3(), 0.5, 0), 0.0, 1.0, -1.0, 1.0));
}

/// A curve that stays in one point, turned about an axis: v goes along it.
TopoDS_Face faceWithoutV()
{
    TColgp_Array1OfPnt poles(1, 2);
    poles.Init(gp_Pnt(9, 0, 0));
    return faceOf(new Geom_SurfaceOfRevolution(new Geom_BezierCurve(poles), gp_Ax1()));
}

class UVIndicatorTest : public test::WithHandles<test::SceneFixture> {
protected:
    ~UVIndicatorTest() override
    {
        scene.deleteUVIndicatorVisual();
        drain();
    }
    std::vector<UVIndicatorVisual*> indicators() const
    {
        std::vector<UVIndicatorVisual*> found;
        for (Visual* child : world->getChildren())
            if (auto* indicator = dynamic_cast<UVIndicatorVisual*>(child))
                found.push_back(indicator);
        return found;
    }
    UVIndicatorVisual& shown(const TopoDS_Face& face)
    {
        scene.showUVIndicatorVisual(face);
        drain();
        return *indicators().at(0);
    }
    static rob::Vec3f axisOf(const Visual& visual, const rob::Vec3f& axis)
    {
        return visual.getPose().rotation() * axis;
    }
};

testing::AssertionResult isNear(const rob::Vec3f& actual, const rob::Vec3f& expected)
{
    if ((actual - expected).length() < 1e-5f)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << actual.x << ", " << actual.y << ", " << actual.z << " is not " << expected.x
                                       << ", " << expected.y << ", " << expected.z;
}

TEST_F(UVIndicatorTest, IsMadeWhenItIsFirstShown)
{
    EXPECT_THAT(indicators(), testing::IsEmpty());
    scene.showUVIndicatorVisual(uprightFace());
    EXPECT_THAT(indicators(), testing::IsEmpty()); // posted

    drain();

    ASSERT_EQ(indicators().size(), 1u);
    const UVIndicatorVisual& indicator = *indicators().front();
    EXPECT_TRUE(indicator.getName().starts_with("uvdirection"));
    EXPECT_TRUE(indicator.getMesh()->getName().starts_with("uv_indicator"));
    EXPECT_EQ(indicator.getMesh()->getMeshName(), "uv_indicator");
    const rob::Colorf color = geometry::ParseColorText("#B8CE8E");
    EXPECT_EQ(test::colorOf(*indicator.getMesh()), Ogre::Vector4(color.r, color.g, color.b, 1));
    EXPECT_TRUE(test::isShown(*indicator.getMesh()));
}

TEST_F(UVIndicatorTest, LooksAlikeHoweverItIsMarked)
{
    UVIndicatorVisual& indicator = shown(uprightFace());
    const auto material = [&] { return indicator.getMesh()->getEntity()->getSubEntity(0)->getMaterialName(); };

    EXPECT_EQ(material(), "UVIndicator");
    indicator.getMesh()->setSelected();
    EXPECT_EQ(material(), "UVIndicator");
    indicator.getMesh()->setHighlighted();
    EXPECT_EQ(material(), "UVIndicator");
}

TEST_F(UVIndicatorTest, StandsInTheMiddleOfTheFacesBounds)
{
    const UVIndicatorVisual& indicator = shown(uprightFace());

    EXPECT_TRUE(isNear(rob::Vec3f(indicator.getPosition()), {120, 20, -15})); // 20 along u, 20 along v, which is -z
    EXPECT_TRUE(isNear(axisOf(indicator, {1, 0, 0}), {1, 0, 0}));
    EXPECT_TRUE(isNear(axisOf(indicator, {0, 1, 0}), {0, 0, -1}));
    EXPECT_TRUE(isNear(axisOf(indicator, {0, 0, 1}), {0, 1, 0}));
}

TEST_F(UVIndicatorTest, OnACurvedFaceItTouchesTheSurface)
{
    const Handle(Geom_CylindricalSurface) surface = new Geom_CylindricalSurface(gp_Ax3(), 50);
    const TopoDS_Face face = BRepBuilderAPI_MakeFace(surface, 0, std::numbers::pi, 0, 100, tolerance).Face();

    const UVIndicatorVisual& indicator = shown(face);

    EXPECT_TRUE(isNear(rob::Vec3f(indicator.getPosition()), {0, 50, 50}));
    EXPECT_TRUE(isNear(axisOf(indicator, {1, 0, 0}), {-1, 0, 0})); // round
    EXPECT_TRUE(isNear(axisOf(indicator, {0, 1, 0}), {0, 0, 1}));  // along
    EXPECT_TRUE(isNear(axisOf(indicator, {0, 0, 1}), {0, 1, 0}));
}

TEST_F(UVIndicatorTest, WhereVLeansItIsMadeSquareToU)
{
    const UVIndicatorVisual& indicator = shown(leaningFace({1, 0, 0}, {3, 4, 0}));

    EXPECT_TRUE(isNear(rob::Vec3f(indicator.getPosition()), {5 + 6, 8, 0}));
    EXPECT_TRUE(isNear(axisOf(indicator, {1, 0, 0}), {1, 0, 0}));
    EXPECT_TRUE(isNear(axisOf(indicator, {0, 1, 0}), {0, 1, 0}));
}

TEST_F(UVIndicatorTest, SecondShowMovesTheOneThereIs)
{
    UVIndicatorVisual& first = shown(uprightFace());

    UVIndicatorVisual& second = shown(leaningFace({1, 0, 0}, {0, 1, 0}));

    EXPECT_EQ(&first, &second);
    EXPECT_EQ(indicators().size(), 1u);
    EXPECT_TRUE(isNear(rob::Vec3f(second.getPosition()), {5, 10, 0}));
}

TEST_F(UVIndicatorTest, HidingKeepsItAndTheNextShowShowsIt)
{
    UVIndicatorVisual& indicator = shown(uprightFace());

    scene.hideUVIndicatorVisual();
    EXPECT_TRUE(indicator.isVisible()); // posted
    drain();
    EXPECT_FALSE(test::isShown(*indicator.getMesh()));

    EXPECT_EQ(&shown(uprightFace()), &indicator);
    EXPECT_TRUE(test::isShown(*indicator.getMesh()));
}

TEST_F(UVIndicatorTest, HidingBeforeAnyShowDoesNothing)
{
    scene.hideUVIndicatorVisual();
    scene.deleteUVIndicatorVisual();
    drain();

    EXPECT_THAT(indicators(), testing::IsEmpty());
}

TEST_F(UVIndicatorTest, DeletionMakesTheNextShowBuildANewOne)
{
    shown(uprightFace());

    scene.deleteUVIndicatorVisual();
    EXPECT_EQ(indicators().size(), 1u); // posted
    drain();
    EXPECT_THAT(indicators(), testing::IsEmpty());

    EXPECT_TRUE(test::isShown(*shown(uprightFace()).getMesh()));
}

TEST_F(UVIndicatorTest, OneThatWasDeletedAsAVisualIsForgotten)
{
    scene.deleteVisual(&shown(uprightFace()));

    EXPECT_TRUE(test::isShown(*shown(uprightFace()).getMesh()));
}

TEST_F(UVIndicatorTest, DegenerateFacesFailAndMoveNothing)
{
    const UVIndicatorVisual& indicator = shown(uprightFace());
    const rob::Posef before = indicator.getPose();
    for (const TopoDS_Face& face : {faceWithoutU(), faceWithoutV(), leaningFace({0, 1, 0}, {0, 1, 0})}) {
        scene.showUVIndicatorVisual(face);

        EXPECT_THAT([&] { drain(); }, throwsExactly<std::overflow_error>("0-length vector cannot be normalized."));
        EXPECT_EQ(indicator.getPose(), before);
    }
}

TEST_F(UVIndicatorTest, FaceWithoutASurfaceShowsNothingAndSaysSo)
{
    std::vector<std::string> lines;
    AppLogger::inst()->setListener([&](LogLevel, const std::string& line) { lines.push_back(line); });

    scene.showUVIndicatorVisual({});
    drain();

    AppLogger::inst()->setListener({});
    EXPECT_FALSE(test::isShown(*indicators().at(0)->getMesh()));
    EXPECT_THAT(lines, testing::ElementsAre("the directions of U and V are not shown: the face has no surface"));
}

} // namespace
} // namespace vrk::visual
