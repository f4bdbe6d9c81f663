#include "PreviewFixture.h"

#include "support/ProcessorTime.h"

namespace vrk::visual {
namespace {

constexpr int edgeCount = 10'000;
constexpr double secondsAllowed = 0.2;

using PreviewCost = test::WithPreviews<test::SceneFixture>;

TEST_F(PreviewCost, TenThousandEdgesAreShownInAFifthOfASecond)
{
    std::vector<TopoDS_Edge> edges;
    for (int i = 0; i < edgeCount; ++i)
        edges.push_back(test::straightEdge({0, i * 0.1, 0}, {10, i * 0.1, 5}));
    scene.previewEdges(&edges, {});
    const double first = test::threadSecondsOf([&] { drain(); });
    ASSERT_THAT(listed<PreviewCurves>(), testing::SizeIs(edgeCount));

    scene.previewEdges(&edges, {});
    const double replaced = test::threadSecondsOf([&] { drain(); });
    scene.removePreviewCurves();
    const double removed = test::threadSecondsOf([&] { drain(); });

    EXPECT_LT(first, secondsAllowed);
    EXPECT_LT(replaced - removed, secondsAllowed);
    EXPECT_LT(removed, secondsAllowed);
    std::cout << "shown in " << 1e3 * first << " ms, replaced in " << 1e3 * replaced << " ms, removed in "
              << 1e3 * removed << " ms\n";
}

} // namespace
} // namespace vrk::visual
