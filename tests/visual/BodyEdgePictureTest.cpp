#include "platform/layout/Body.h"
#include "support/SceneFixture.h"
#include "visual/SolidVisual.h"

#include <BRepPrimAPI_MakeCylinder.hxx>

#include <algorithm>

namespace vrk::visual {
namespace {

using rob::Posf;
using test::Picture;
using test::Pixel;
using test::View;

const View front{{0, -1000, 0}, {0, 0, 0}, {0, 0, 1}};

/// Bodies that are looked at from the front, across whose middle a row of the picture is read.
class BodyEdgePicture : public test::RenderTest {
protected:
    /// In the middle of the picture.
    void addBox(float size, const std::string& color)
    {
        addBody(test::meshedBox(size, size, size), "edges-box-" + std::to_string(size) + color, color,
                {-size / 2, -size / 2, -size / 2});
    }
    void addBody(const TopoDS_Shape& shape, const std::string& uri, const std::string& color, const Posf& at)
    {
        const auto body = test::addModelBody(shape, uri, color);
        SolidVisual::Build(world, body.get(), shape);
        Scene::GetVisual(body->getId())->setPosition(at);
    }
    static std::vector<int> middleRow(const Picture& picture)
    {
        std::vector<int> row;
        for (unsigned x = 0; x < picture.width; ++x) {
            const Pixel pixel = picture.at(x, picture.height / 2);
            row.push_back((pixel.r + pixel.g + pixel.b) / 3);
        }
        return row;
    }
    /// How dark the middle row of a white box becomes, 0 to 255: the less, the heavier its edges.
    int darkestOfWhiteBox(float size)
    {
        addBox(size, "#FFFFFF");
        return std::ranges::min(middleRow(render(front)));
    }
};

constexpr int background = 115; // 0.45 of 255

TEST_F(BodyEdgePicture, LargeBodyHasDarkEdges)
{
    setSize(800, 1080, 4);
    EXPECT_LT(darkestOfWhiteBox(300), 60);
}

TEST_F(BodyEdgePicture, SmallBodyHasNone)
{
    setSize(800, 1080, 4);
    EXPECT_GT(darkestOfWhiteBox(6), background - 4);
}

TEST_F(BodyEdgePicture, BodyBetweenHasPaleOnes)
{
    setSize(800, 1080, 4);
    const int darkest = darkestOfWhiteBox(50); // some sixty pixels
    EXPECT_LT(darkest, background - 10);
    EXPECT_GT(darkest, 60);
}

TEST_F(BodyEdgePicture, EdgesAreAsFineAsThePicture)
{
    addBox(500, "#FFFFFF");
    const auto darkOf = [this](unsigned width, unsigned height) {
        setSize(width, height, 4);
        double dark = 0;
        const std::vector<int> row = middleRow(render(front));
        for (const int each : row)
            dark += std::max(0, background - each);
        return dark / background;
    };
    const double coarse = darkOf(400, 540);
    const double usual = darkOf(800, 1080);
    const double fine = darkOf(1600, 2160);
    EXPECT_NEAR(fine, 2 * usual, 0.35 * usual);
    EXPECT_LT(coarse, 0.8 * usual);
    EXPECT_GT(coarse, 0.2 * usual) << "they are still seen";
}

TEST_F(BodyEdgePicture, EdgesOfABlackBodyAreLight)
{
    setSize(800, 1080, 4);
    addBox(300, "#000000");
    // From above, so that an edge lies between two faces of the body.
    const Picture picture = render({{0, -800, 800}, {0, 0, 0}, {0, 0, 1}});
    const Posf onEdge{0, -150, 150};
    const Posf onFace{0, -100, 150};
    int lightest = 0;
    for (float offset = -6; offset <= 6; offset += 0.5f) {
        const Pixel pixel = pixelAt(picture, {onEdge.x, onEdge.y + offset, onEdge.z});
        lightest = std::max(lightest, (pixel.r + pixel.g + pixel.b) / 3);
    }
    const Pixel face = pixelAt(picture, onFace);
    EXPECT_GT(lightest, (face.r + face.g + face.b) / 3 + 12);
}

TEST_F(BodyEdgePicture, SeamOfACylinderIsPalerThanItsRim)
{
    setSize(800, 1080, 4);
    gp_Ax2 axes(gp_Pnt(0, 0, -150), gp_Dir(0, 0, 1), gp_Dir(0, -1, 0)); // the seam in front
    addBody(test::meshed(BRepPrimAPI_MakeCylinder(axes, 150, 300).Shape()), "edges-cylinder", "#FFFFFF", {0, 0, 0});
    const Picture picture = render({{0, -800, 500}, {0, 0, 0}, {0, 0, 1}});

    const auto darkestAround = [&](const Posf& place, const Posf& step) {
        int darkest = 255;
        for (int i = -10; i <= 10; ++i) {
            const Pixel pixel = pixelAt(picture, Posf(place + step * (0.5f * static_cast<float>(i))));
            darkest = std::min(darkest, (pixel.r + pixel.g + pixel.b) / 3);
        }
        return darkest;
    };
    const int rim = darkestAround({0, -150, 150}, {0, 0, 1});
    const int seam = darkestAround({0, -150, 0}, {1, 0, 0});
    const Pixel face = pixelAt(picture, {30, -146, 0});
    EXPECT_LT(rim, 60);
    EXPECT_GT(seam, rim + 40);
    EXPECT_LT(seam, (face.r + face.g + face.b) / 3 - 10) << "it is still seen";
}

TEST_F(BodyEdgePicture, EdgesLookAsTheyDid)
{
    setSize(400, 300, 4);
    addBody(test::meshedBox(200, 200, 200), "edges-black", "#0A0A0A", {-330, -100, -100});
    addBody(test::meshed(BRepPrimAPI_MakeCylinder(100, 200).Shape()), "edges-round", "#D8DCE0", {0, 0, -100});
    addBody(test::meshedBox(30, 30, 30), "edges-small", "#E08030", {220, 0, -15});
    EXPECT_TRUE(matchesBaseline(render({{150, -800, 400}, {-30, 0, 0}, {0, 0, 1}}), "body_edges"));
}

} // namespace
} // namespace vrk::visual
