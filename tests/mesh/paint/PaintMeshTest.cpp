#include "mesh/paint/PaintMesh.h"
#include "mesh/paint/PaintSkin.h"

#include <cmath>
#include <type_traits>
#include <utility>

namespace vrk::visual {

inline bool operator==(const Color& a, const Color& b)
{
    return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::has_virtual_destructor_v<Mesh>, "the meshes of the manager end as Mesh, whatever they are");

PaintMesh withThreeColors()
{
    PaintMesh paint("paint");
    paint.addColor(0.1f, 0.2f, 0.3f);
    paint.addColor(0.4f, 0.5f, 0.6f);
    paint.addColor(0.7f, 0.8f, 0.9f);
    return paint;
}

TEST(PaintMesh, IsEmptyAtFirst)
{
    PaintMesh paint;

    EXPECT_EQ(paint.name, "");
    EXPECT_FALSE(paint.hasColor());
    EXPECT_THAT(paint.getChangedColorIndexes(), IsEmpty());
    EXPECT_THAT(paint.vertices, IsEmpty());
}

TEST(PaintMesh, ColorThatIsAddedIsTransparentAndNoChange)
{
    PaintMesh paint = withThreeColors();

    EXPECT_TRUE(paint.hasColor());
    EXPECT_EQ(paint.color(1), (Color{0.4f, 0.5f, 0.6f, 0}));
    EXPECT_THAT(paint.getChangedColorIndexes(), IsEmpty());
}

TEST(PaintMesh, ChangesAreListedInTheirOrderAlsoTwice)
{
    PaintMesh paint = withThreeColors();

    paint.setColor(2, {1, 0, 0, 1});
    paint.setColor(0, {0, 1, 0, 1});
    paint.setColor(2, {0, 0, 1, 0.5f});

    EXPECT_THAT(paint.getChangedColorIndexes(), ElementsAre(2, 0, 2));
    EXPECT_EQ(paint.color(2), (Color{0, 0, 1, 0.5f}));
    EXPECT_EQ(paint.color(0), (Color{0, 1, 0, 1}));
    EXPECT_EQ(paint.color(1), (Color{0.4f, 0.5f, 0.6f, 0}));
}

TEST(PaintMesh, IsCopiedAndMovedWithItsChanges)
{
    PaintMesh paint = withThreeColors();
    paint.setColor(1, {1, 1, 1, 1});

    PaintMesh copy = paint;
    copy.setColor(0, {0, 0, 0, 0});
    const PaintMesh moved = std::move(copy);

    EXPECT_THAT(paint.changedColorIndexes, ElementsAre(1));
    EXPECT_THAT(moved.changedColorIndexes, ElementsAre(1, 0));
    EXPECT_EQ(moved.color(1), (Color{1, 1, 1, 1}));
    EXPECT_EQ(moved.name, "paint");
}

TEST(PaintSkin, EdgesAreAFiftiethOfTheExtentFrom2To10)
{
    EXPECT_EQ(paintEdgeLength(50), 2);
    EXPECT_EQ(paintEdgeLength(100), 2);
    EXPECT_EQ(paintEdgeLength(250), 5);
    EXPECT_EQ(paintEdgeLength(500), 10);
    EXPECT_EQ(paintEdgeLength(1000), 10);
    EXPECT_EQ(paintEdgeLength(0), 2);
    EXPECT_EQ(paintEdgeLength(std::nan("")), 2);
}

TEST(PaintSkin, NormalsAreTheMeansOfTheirTrianglesAndUnitLong)
{
    using Mesh = cadcam::TMesh<double>;
    const auto triangle = [](unsigned a, unsigned b, unsigned c, Mesh::Point normal) {
        Mesh::Triangle made;
        made.vertices = {a, b, c};
        made.normal = normal;
        return made;
    };
    // Whatever the places say: the normals are those of the triangles, as long as they are.
    const Mesh even({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {5, 5, 5}},
                    {triangle(0, 1, 2, {3, 0, 0}), triangle(0, 2, 3, {0, 4, 0}), triangle(2, 3, 3, {-6, -8, 0})});

    const auto skin = makePaintSkin("skin", even);

    EXPECT_EQ(skin->name, "skin");
    ASSERT_EQ(skin->normals.size(), 5u);
    EXPECT_NEAR(skin->normals[0].x, 0.6f, 1e-6);
    EXPECT_NEAR(skin->normals[0].y, 0.8f, 1e-6);
    EXPECT_EQ(skin->normals[1], rob::Vec3f(1, 0, 0));
    EXPECT_NEAR(skin->normals[2].length(), 1.0f, 1e-6);
    EXPECT_EQ(skin->normals[4], rob::Vec3f(0, 0, 1)) << "of a vertex of no triangle";
    EXPECT_THAT(skin->indices, ElementsAre(0, 1, 2, 0, 2, 3, 2, 3, 3));
    ASSERT_EQ(skin->colorTable.size(), 5u);
    for (const Color& color : skin->colorTable)
        EXPECT_EQ(color, (Color{0, 0, 1, 0}));
    EXPECT_THAT(skin->changedColorIndexes, IsEmpty());
}

TEST(PaintSkin, NormalsThatCancelOutStayZero)
{
    using Mesh = cadcam::TMesh<double>;
    Mesh::Triangle up, down;
    up.vertices = down.vertices = {0, 1, 2};
    up.normal = {0, 0, 1};
    down.normal = {0, 0, -1};

    const auto skin = makePaintSkin("fin", Mesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {up, down}));

    EXPECT_EQ(skin->normals[0], rob::Vec3f(0, 0, 0));
}

} // namespace
} // namespace vrk::visual
