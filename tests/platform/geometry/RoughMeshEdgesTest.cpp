#include "Surfaces.h"

#include <gmock/gmock.h>

namespace vrk::geometry {
namespace {

using test::Surface;
using testing::IsEmpty;
using testing::SizeIs;

TEST(RoughMeshEdges, RoughSurfaceHasNothingButItsBorders)
{
    for (const double deviation : {0.1, 0.2, 0.3, 0.5, 1.0})
        for (unsigned seed = 0; seed < 3; ++seed) {
            SCOPED_TRACE(testing::Message() << "deviation " << deviation << ", seed " << seed);
            const MeshEdges edges = test::edgesOf(test::roughField(200, deviation, seed));

            EXPECT_EQ(edges.points.size(), 2u * 4 * 200);
        }
}

TEST(RoughMeshEdges, SharpFoldOfARoughSurfaceIsDrawnWhereTheRestIsLess)
{
    // A roof of 120 degrees, rough by bends of more than 35.
    std::mt19937 random(1);
    std::normal_distribution<double> height(0, 0.12);
    const Surface roof = test::field(
        100, [&](unsigned i, unsigned) { return -1.8 * std::abs(static_cast<int>(i) - 50) + height(random); });

    const auto segments = test::segmentsOf(test::edgesOf(roof));

    const auto isRidge = [](const test::Segment& s) { return s[0][0] == 50 && s[1][0] == 50; };
    const auto isWithin = [](const test::Segment& s) {
        return std::ranges::any_of(
            s, [](const test::Place& p) { return p[0] > 0 && p[0] < 100 && p[1] > 0 && p[1] < 100; });
    };
    EXPECT_EQ(std::ranges::count_if(segments, isRidge), 100);
    EXPECT_LE(std::ranges::count_if(segments, isWithin), 110) << "nearly nothing else";
}

TEST(RoughMeshEdges, ManyBoxesKeepTheirEdges)
{
    Surface boxes;
    for (unsigned i = 0; i < 400; ++i) {
        const Surface box = test::cube();
        const auto first = static_cast<unsigned>(boxes.points.size());
        for (const rob::Posf& p : box.points)
            boxes.points.emplace_back(p.x + 2.0f * (i % 20), p.y + 2.0f * (i / 20), p.z);
        for (const unsigned index : box.indices)
            boxes.indices.push_back(first + index);
    }

    EXPECT_THAT(test::edgesOf(boxes).points, SizeIs(24 * 400));
}

TEST(RoughMeshEdges, SoupOfNothingButSmallBordersHasNone)
{
    Surface soup = test::soupOf(test::field(200, [](unsigned, unsigned) { return 0.0; }));
    std::mt19937 random(1);
    std::uniform_real_distribution<float> shift(-0.1f, 0.1f);
    for (rob::Posf& point : soup.points)
        point = rob::Posf(point.x + shift(random), point.y + shift(random), point.z + shift(random));

    EXPECT_THAT(test::edgesOf(soup).points, IsEmpty());
}

TEST(RoughMeshEdges, LineIsFollowedWhereItIsBentLess)
{
    // A ridge that is bent by 50 degrees, but for its middle, where it is by 27.
    const auto slopeAt = [](unsigned j) { return j >= 40 && j <= 60 ? 0.24 : 0.47; };
    const Surface ridge =
        test::field(100, [&](unsigned i, unsigned j) { return -slopeAt(j) * std::abs(static_cast<int>(i) - 50); });

    const auto segments = test::segmentsOf(test::edgesOf(ridge));

    EXPECT_EQ(std::ranges::count_if(segments, [](const test::Segment& s) { return s[0][0] == 50 && s[1][0] == 50; }),
              100);
}

TEST(RoughMeshEdges, ShortBendThatEndsFreelyIsLeftOut)
{
    // A low dam across a field, bent along its top by 11 degrees, but for so many cells by 44.
    const auto bendsOf = [](unsigned cells) {
        const Surface dam = test::field(100, [cells](unsigned i, unsigned j) {
            const double slope = j >= 30 && j <= 30 + cells ? 0.4 : 0.1;
            return slope * std::max(0, 2 - std::abs(static_cast<int>(i) - 50));
        });
        const auto segments = test::segmentsOf(test::edgesOf(dam));
        return std::ranges::count_if(segments, [](const test::Segment& s) { return s[0][0] == 50 && s[1][0] == 50; });
    };

    EXPECT_EQ(bendsOf(1), 0);
    EXPECT_GE(bendsOf(40), 40);
}

} // namespace
} // namespace vrk::geometry
