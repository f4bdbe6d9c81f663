#include "platform/layout/Body.h"
#include "support/SceneFixture.h"
#include "visual/CurveVisual.h"
#include "visual/EdgeVisual.h"
#include "visual/Edges.h"
#include "visual/FrameVisual.h"
#include "visual/LineVisual.h"
#include "visual/MeshVisual.h"
#include "visual/SolidVisual.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>

#include <cmath>

namespace vrk::visual {
namespace {

using test::lookingAtOrigin;
using test::Picture;
using test::Pixel;
using test::View;

const Pixel background{115, 115, 115};

class LinePicture : public test::RenderTest {
protected:
    SolidVisual* addBody(const TopoDS_Shape& shape, const std::string& uri)
    {
        const auto body = test::addModelBody(shape, uri, "#A0A4A8");
        SolidVisual::Build(world, body.get(), shape);
        return static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    }
    DynamicLines* addLine(RenderOpType type, const std::vector<rob::Posf>& points, const std::string& material)
    {
        auto* visual = new LineVisual(world);
        DynamicLines* line = visual->createDynamicLine(type);
        for (const rob::Posf& point : points)
            line->addPoint(point.x, point.y, point.z);
        visual->update();
        visual->setMaterial(material, material, material);
        return line;
    }
    /// How many of a hundred points between two places have a colour like that of the line that lies there.
    int shownBetween(const Picture& picture, const rob::Posf& a, const rob::Posf& b, bool (*isLike)(const Pixel&)) const
    {
        int shown = 0;
        for (int i = 1; i <= 100; ++i)
            shown += isLike(pixelAt(picture, a + (b - a) * (static_cast<float>(i) / 101.0f))) ? 1 : 0;
        return shown;
    }
};

// Where a line falls between two rows of pixels, neither has all of its colour.

bool blue(const Pixel& pixel)
{
    return pixel.b > pixel.r + 50;
}

bool dark(const Pixel& pixel)
{
    return pixel.r < 70;
}

TEST_F(LinePicture, FramesHaveFourLooks)
{
    auto* normal = new FrameVisual(world, 100.0f);
    normal->setPosition(-210, 0, -40);
    auto* selected = new FrameVisual(world, 100.0f);
    selected->setPosition(-70, 0, -40);
    selected->setSelected();
    auto* highlighted = new FrameVisual(world, 100.0f);
    highlighted->setPosition(70, 0, -40);
    highlighted->setHighlighted();
    auto* dashed = new FrameVisual(world, "dashed", VisualType::Frame, 5);
    dashed->setPosition(210, 0, -40);
    setSize(800, 400);

    const Picture picture = render({{120, -560, 260}, {25, 0, 0}, {0, 0, 1}});

    const Pixel x = pixelAt(picture, {-160, 0, -40});
    const Pixel y = pixelAt(picture, {-210, 50, -40});
    const Pixel z = pixelAt(picture, {-210, 0, 10});
    EXPECT_GT(x.r, x.g + 100);
    EXPECT_GT(y.g, y.r + 100);
    EXPECT_GT(z.b, z.r + 100);
    EXPECT_TRUE(isNear(pixelAt(picture, {70, 0, 10}), {255, 255, 255}));
    EXPECT_TRUE(isNear(pixelAt(picture, {210, 0, -40 + 18}), background)) << "between two dashes";
    EXPECT_TRUE(matchesBaseline(picture, "frame_looks"));
}

TEST_F(LinePicture, FrameOfTheWorldIsDrawn)
{
    worldFrame->setVisible(true, false);

    const Picture picture = render(lookingAtOrigin(400));

    const Pixel z = pixelAt(picture, {0, 0, 50});
    EXPECT_GT(z.b, z.r + 100);
}

TEST_F(LinePicture, SolidShowsItsEdges)
{
    const TopoDS_Shape block = BRepPrimAPI_MakeBox(200, 140, 80).Shape();
    const TopoDS_Shape drill = BRepPrimAPI_MakeCylinder(gp_Ax2({100, 70, -1}, gp::DZ()), 40, 100).Shape();
    SolidVisual* solid = addBody(test::meshed(BRepAlgoAPI_Cut(block, drill).Shape()), "picture-wired");
    solid->setPosition(-100, -70, -40);
    setSize(1440, 1080); // in coarser pictures edges are finer

    const Picture picture = render(lookingAtOrigin(420));

    EXPECT_GT(shownBetween(picture, {-100, -70, 40}, {100, -70, 40}, dark), 85);
    EXPECT_GT(shownBetween(picture, {100, -70, -40}, {100, -70, 40}, dark), 85);
    EXPECT_LT(shownBetween(picture, {-100, 70, -40}, {100, 70, -40}, dark), 5) << "an edge at the back";
    EXPECT_TRUE(matchesBaseline(picture, "solid_with_edges"));
}

TEST_F(LinePicture, CurvesHaveThreeLooksAndArrows)
{
    for (const int place : {-1, 0, 1}) {
        const auto x = static_cast<double>(place) * 60;
        const TopoDS_Wire wire =
            test::wireOfThree({x - 20, 0, -30}, {x + 20, 0, -20}, {x + 10, 30, 10}, {x - 20, 0, 30});
        const auto body = test::addModelBody(wire, "picture-curve" + std::to_string(place));
        CurveVisual::Build(world, body.get(), wire);
        auto* curve = static_cast<CurveVisual*>(Scene::GetVisual(body->getId()));
        if (place == 0)
            curve->setSelected();
        if (place == 1)
            curve->setHighlighted();
        curve->addArrow(place != 0);
    }
    setSize(800, 400);

    const Picture picture = render({{40, -170, 60}, {0, 0, 0}, {0, 0, 1}});

    const Pixel plain = pixelAt(picture, {-60, 0, -25});
    const Pixel selected = pixelAt(picture, {0, 0, -25});
    const Pixel highlighted = pixelAt(picture, {60, 0, -25});
    EXPECT_GT(plain.b, plain.r + 80);
    EXPECT_GT(selected.r, selected.g + 100);
    EXPECT_GT(highlighted.b, 220);
    EXPECT_GT(highlighted.g, 190);
    EXPECT_TRUE(matchesBaseline(picture, "curve_looks"));
}

struct DistanceCase {
    const char* name;
    float distance;
    float size; // of a box that fills much of the picture
};
class LinesOnFaces : public LinePicture, public testing::WithParamInterface<DistanceCase> {};

TEST_P(LinesOnFaces, AreSeenWholeAndNotThroughWalls)
{
    const float s = GetParam().size;
    SolidVisual* box = addBody(test::meshedBox(s, s, s), std::string("picture-lined") + GetParam().name);
    box->setPosition(-s / 2, -s / 2, -s / 2);
    const float h = s / 2;
    addLine(RenderOpType::LineStrip, {{-h, -h, 0}, {0, -h, h * 0.9f}, {h, -h, -h * 0.5f}},
            "BlueFrameLine");                                                                            // on the front
    addLine(RenderOpType::Lines, {{-h, 0, h}, {h, h * 0.3f, h}}, "BlueFrameLine");                       // on the top
    addLine(RenderOpType::Lines, {{-h * 0.9f, h, -h * 0.5f}, {h * 0.9f, h, h * 0.5f}}, "BlueFrameLine"); // on the back
    // Behind the front, no deeper than the wall of a box would be.
    addLine(RenderOpType::Lines, {{-h * 0.8f, -h * 0.9f, -h * 0.8f}, {h * 0.8f, -h * 0.9f, -h * 0.8f}},
            "BlueFrameLine");

    const Picture picture = render(lookingAtOrigin(GetParam().distance));

    EXPECT_GT(shownBetween(picture, {-h, -h, 0}, {0, -h, h * 0.9f}, blue), 94);
    EXPECT_GT(shownBetween(picture, {0, -h, h * 0.9f}, {h, -h, -h * 0.5f}, blue), 94);
    EXPECT_GT(shownBetween(picture, {-h, 0, h}, {h, h * 0.3f, h}, blue), 94);
    EXPECT_EQ(shownBetween(picture, {-h * 0.9f, h, -h * 0.5f}, {h * 0.9f, h, h * 0.5f}, blue), 0);
    EXPECT_EQ(shownBetween(picture, {-h * 0.8f, -h * 0.9f, -h * 0.8f}, {h * 0.8f, -h * 0.9f, -h * 0.8f}, blue), 0);
    EXPECT_TRUE(matchesBaseline(picture, std::string("lines_on_faces_") + GetParam().name));
}

INSTANTIATE_TEST_SUITE_P(Table, LinesOnFaces,
                         testing::Values(DistanceCase{"near", 30, 10}, DistanceCase{"middle", 600, 200},
                                         DistanceCase{"far", 30'000, 10'000}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(LinePicture, LineOnAFaceSeenAtAFlatAngleIsWhole)
{
    SolidVisual* plate = addBody(test::meshedBox(400, 400, 10), "picture-plate");
    plate->setPosition(-200, -200, -10);
    addLine(RenderOpType::Lines, {{-150, -120, 0}, {150, 120, 0}}, "BlueFrameLine");

    const Picture picture = render({{0, -500, 120}, {0, 0, 0}, {0, 0, 1}});

    EXPECT_GT(shownBetween(picture, {-150, -120, 0}, {150, 120, 0}, blue), 94);
}

TEST_F(LinePicture, SmallBodyFarAwayIsNotBuriedUnderItsEdges)
{
    SolidVisual* box = addBody(test::meshedBox(200, 200, 200), "picture-small");
    box->setPosition(-100, -100, -100);

    const Picture picture = render(lookingAtOrigin(3000));

    EXPECT_GT(pixelAt(picture, {0, 0, 100}).r, 80) << "the middle of the top";
    EXPECT_TRUE(matchesBaseline(picture, "small_body_with_edges"));
}

TEST_F(LinePicture, LineThatPassesTheEyeIsCutAtTheNearPlane)
{
    addLine(RenderOpType::Lines, {{0, 400, 0}, {20, -800, -30}}, "BlueFrameLine");

    const Picture picture = render({{0, -400, 0}, {0, 0, 0}, {0, 0, 1}});

    EXPECT_GT(shownBetween(picture, {0, 400, 0}, {8, -80, -12}, blue), 94);
    unsigned coloured = 0;
    for (unsigned y = 0; y < picture.height; ++y)
        for (unsigned x = 0; x < picture.width; ++x)
            coloured += test::difference(picture.at(x, y), background) > 40 ? 1 : 0;
    EXPECT_LT(coloured, 1000u) << "and nothing else is painted";
}

TEST_F(LinePicture, LineWithoutPointsBesideAnotherDrawsNothing)
{
    auto* visual = new LineVisual(world);
    visual->createDynamicLine(RenderOpType::LineStrip); // shares the node, and so is not culled
    DynamicLines* line = visual->createDynamicLine(RenderOpType::Lines);
    line->addPoint(-100, 0, 0);
    line->addPoint(100, 0, 0);
    visual->update();
    visual->setMaterial("BlueFrameLine", "", "");

    const Picture picture = render(lookingAtOrigin(400));

    EXPECT_TRUE(blue(pixelAt(picture, {0, 0, 0})));
}

TEST_F(LinePicture, SegmentOfNoLengthIsNoDot)
{
    addLine(RenderOpType::Lines, {{0, 0, 0}, {0, 0, 0}}, "WhiteFrameLine");

    EXPECT_TRUE(isNear(pixelAt(render(lookingAtOrigin(400)), {0, 0, 0}), background, 1));
}

TEST_F(LinePicture, CoordinatesThatAreNoNumberLeaveTheRestDrawn)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    addLine(RenderOpType::LineStrip,
            {{-100, 0, 0},
             {-10, 0, 0},
             {nan, 0, 0},
             {std::numeric_limits<float>::infinity(), 0, 0},
             {10, 0, 0},
             {100, 0, 0}},
            "BlueFrameLine");

    const Picture picture = render(lookingAtOrigin(400));

    EXPECT_GT(shownBetween(picture, {-100, 0, 0}, {-10, 0, 0}, blue), 94);
    EXPECT_GT(shownBetween(picture, {10, 0, 0}, {100, 0, 0}, blue), 94);
}

TEST_F(LinePicture, BufferThatWasReplacedTwiceBetweenTwoFramesIsDrawn)
{
    DynamicLines* line = addLine(RenderOpType::LineStrip, {{-100, 0, 0}, {-50, 0, 0}}, "BlueFrameLine");
    render(lookingAtOrigin(400));

    for (unsigned round = 0; round < 8; ++round) {
        line->clear();
        for (int i = 0; i < 9; ++i)
            line->addPoint(-100, 0, 0);
        line->update();
        line->clear();
        line->addPoint(-100, 0, static_cast<float>(round) * 10);
        line->addPoint(100, 0, static_cast<float>(round) * 10);
        line->update();
        const Picture picture = render(lookingAtOrigin(400));
        const rob::Posf end(100, 0, static_cast<float>(round) * 10);
        EXPECT_GT(shownBetween(picture, {-100, 0, end.z}, end, blue), 94) << "round " << round;
    }
}

TEST_F(LinePicture, FinePictureHasWiderLines)
{
    addLine(RenderOpType::Lines, {{-2000, 0, 0}, {2000, 0, 0}}, "WhiteFrameLine");
    const View view{{0, -400, 0}, {0, 0, 0}, {0, 0, 1}};
    const auto rowsOfTheLine = [this, &view](unsigned width, unsigned height) {
        setSize(width, height);
        const Picture picture = render(view);
        unsigned rows = 0;
        for (unsigned y = 0; y < height; ++y)
            rows += picture.at(width / 2, y).r > 220 ? 1 : 0;
        return rows;
    };

    const unsigned fullHd = rowsOfTheLine(1920, 1080);
    const unsigned fine = rowsOfTheLine(3840, 2160);

    EXPECT_NEAR(fullHd, 3, 1);
    EXPECT_NEAR(fine, 6, 1);
}

TEST_F(LinePicture, LinesStayWholeWhereBodiesAreDrawnAsWires)
{
    addLine(RenderOpType::Lines, {{-100, 0, 0}, {100, 0, 0}}, "BlueFrameLine");
    Ogre::Camera* camera = sceneManager->getCameras().begin()->second;
    camera->setPolygonMode(Ogre::PM_WIREFRAME);

    const Picture picture = render(lookingAtOrigin(400));

    camera->setPolygonMode(Ogre::PM_SOLID);
    EXPECT_GT(shownBetween(picture, {-100, 0, 0}, {100, 0, 0}, blue), 94);
}

class LineMaterials : public LinePicture, public testing::WithParamInterface<const char*> {};

TEST_P(LineMaterials, DrawsListsAndStrips)
{
    DynamicLines* list = addLine(RenderOpType::Lines, {{-100, 0, 20}, {100, 0, 20}}, GetParam());
    DynamicLines* strip = addLine(RenderOpType::LineStrip, {{-100, 0, -20}, {0, 0, -20}, {100, 0, -20}}, GetParam());
    for (DynamicLines* line : {list, strip})
        line->setCustomParameter(0, Ogre::Vector4(0.9f, 0.2f, 0.6f, 1));

    setSize(1440, 1080); // edges of bodies are paler in coarser pictures
    const Picture picture = render({{0, -400, 0}, {0, 0, 0}, {0, 0, 1}});

    EXPECT_EQ(list->getMaterial()->getName(), GetParam());
    const Pixel first = pixelAt(picture, {50, 0, 20});
    EXPECT_GT(difference(first, background), 60);
    EXPECT_TRUE(isNear(pixelAt(picture, {50, 0, -20}), first, 40)) << "the two fall on pixels in other ways";
}

INSTANTIATE_TEST_SUITE_P(AllNames, LineMaterials,
                         testing::Values("RedFrameLine", "GreenFrameLine", "BlueFrameLine", "WhiteFrameLine",
                                         "RedFrameLineSelected", "GreenFrameLineSelected", "BlueFrameLineSelected",
                                         "PreviewCurve", "BodyCurve", "BodyCurveHighlighted", "BodyCurveSelected",
                                         "GeneratedEdge", "WireFrame", "PathLine", "PathLineSelected",
                                         "PathLineHighlighted", "PathBoundary", "BandVector", "BandVectorSelect",
                                         "BandVectorHighlight", "JointAxis", "FrameLine"),
                         [](const auto& info) { return std::string(info.param); });

struct BodyColourCase {
    const char* material;
    Pixel plain; // the surface without light
};
class BodyColoursOnLines : public LinePicture, public testing::WithParamInterface<BodyColourCase> {};

TEST_P(BodyColoursOnLines, NeedNoNormals)
{
    std::vector<rob::Posf> points; // a pixel wide, and as near to each other
    for (float z = -10; z <= 10; z += 0.2f) {
        points.emplace_back(-100.0f, 0.0f, z);
        points.emplace_back(100.0f, 0.0f, z);
    }
    addLine(RenderOpType::Lines, points, GetParam().material);

    const Picture picture = render({{0, -200, 0}, {0, 0, 0}, {0, 0, 1}});

    for (const float x : {-60.0f, 0.0f, 60.0f})
        EXPECT_TRUE(isNear(pixelAt(picture, {x, 0, 0}), GetParam().plain, 2)) << x;
}

// The edges of a robot take the colour of its maker.
INSTANTIATE_TEST_SUITE_P(Table, BodyColoursOnLines,
                         testing::Values(BodyColourCase{"ABB", {237, 102, 33}}, BodyColourCase{"KUKA", {245, 112, 13}},
                                         BodyColourCase{"FANUC", {247, 209, 26}},
                                         BodyColourCase{"YASKAWA", {51, 107, 184}},
                                         BodyColourCase{"Mechanism", {158, 168, 179}}),
                         [](const auto& info) { return std::string(info.param.material); });

TEST_F(LinePicture, TraceHasAColourForEachPoint)
{
    auto* visual = new Visual(world);
    Ogre::ManualObject* trace = sceneManager->createManualObject("trace");
    trace->begin("TcpTrace", Ogre::RenderOperation::OT_LINE_STRIP);
    trace->position(-100, 0, 0);
    trace->colour(1, 0, 0, 1);
    trace->position(0, 0, 0);
    trace->colour(1, 0, 0, 1);
    trace->position(100, 0, 0);
    trace->colour(0, 0, 1, 1);
    trace->end();
    visual->attachObject(trace);

    const Picture picture = render({{0, -400, 0}, {0, 0, 0}, {0, 0, 1}});

    sceneManager->destroyManualObject(trace);
    EXPECT_TRUE(isNear(pixelAt(picture, {-50, 0, 0}), {255, 0, 0}, 40));
    EXPECT_TRUE(isNear(pixelAt(picture, {50, 0, 0}), {128, 0, 128}, 40));
    EXPECT_TRUE(isNear(pixelAt(picture, {98, 0, 0}), {0, 0, 255}, 40));
}

} // namespace
} // namespace vrk::visual
