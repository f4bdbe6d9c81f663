#include "selection/CloudPoints.h"
#include "selection/SensitiveFace.h"
#include "selection/ShapeBorders.h"
#include "selection/geometry/BVHNode.h"
#include "selection/region/ObjectInView.h"
#include "selection/region/RegionPoints.h"
#include "selection/region/RegionWork.h"
#include "selection/region/SeenMap.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <random>
#include <thread>

/// What questions share, asked on several threads at once.
namespace vrk::selection {
namespace {

constexpr unsigned askers = 4;

template <typename Ask>
void onSeveralThreads(const Ask& ask)
{
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < askers; ++i)
        threads.emplace_back([&ask, i] { ask(i); });
    for (std::thread& thread : threads)
        thread.join();
}

/// A view of 1000 x 1000 pixels, one for each unit, from above: x to the right and y upwards.
RegionView viewFromAbove()
{
    RegionView view;
    view.view = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -1000, 0, 0, 0, 1};
    view.projection = {0.002, 0, 0, -1, 0, 0.002, 0, -1, 0, 0, -0.001, 0, 0, 0, 0, 1};
    view.width = view.height = 1000;
    return view;
}

/// So many that the work is shared out.
std::vector<rob::Posf> manyPoints()
{
    std::mt19937 random(5);
    std::uniform_real_distribution<float> at(0, 1000);
    std::vector<rob::Posf> points;
    for (int i = 0; i < 60000; ++i) {
        const float x = at(random), y = at(random), z = at(random) / 2;
        points.emplace_back(x, y, z);
    }
    return points;
}

const std::vector<rob::Vec2Template<double>> star{{100, 100}, {500, 300}, {900, 100}, {700, 500},
                                                  {900, 900}, {500, 700}, {100, 900}, {300, 500}};

class RegionThreads : public testing::Test {
protected:
    RegionThreads()
        : points(manyPoints()), cloud(points, Box(0, 0, 0, 1000, 1000, 500)), hidden(std::vector<std::uint32_t>{3, 70}),
          view(viewFromAbove()), region(star, 1000, 1000)
    {
    }

    std::vector<std::uint32_t> ask(const RegionQuery& query) const
    {
        const RegionTest test(query, region, ObjectInView(view, {}, {1, 1, 1}));
        RegionWork work(query);
        work.advance(0); // between the steps of a question, as the service does
        const SeenMap seen(query, view, region, {}, work);
        const bool isSightAsked = query.sight != RegionQuery::Sight::Through;
        return RegionPoints(cloud, &hidden, test, isSightAsked ? &seen : nullptr, work).takeNumbers();
    }
    std::vector<std::uint32_t> byLoop() const
    {
        std::vector<std::uint32_t> numbers;
        for (std::uint32_t i = 0; i < points.size(); ++i)
            if (!hidden.contains(i) && region.holds({points[i].x, 1000.0 - points[i].y}))
                numbers.push_back(i);
        return numbers;
    }

    std::vector<rob::Posf> points;
    CloudPoints cloud;
    layout::PointSet hidden;
    RegionView view;
    ScreenRegion region;
};

TEST_F(RegionThreads, PointsOfOneCloudAreTheSameOnEachOfSeveralThreads)
{
    const std::vector<std::uint32_t> expected = byLoop();
    ASSERT_GT(expected.size(), 10000u);
    std::vector<std::uint32_t> found[askers];

    onSeveralThreads([&](unsigned i) {
        RegionQuery query;
        query.corners = star;
        query.sight = i % 2 == 0 ? RegionQuery::Sight::Through : RegionQuery::Sight::Seen;
        std::atomic<int> told = 0;
        query.progress = [&told](double) { ++told; };
        for (int k = 0; k < 3; ++k)
            found[i] = ask(query);
        EXPECT_GT(told, 0);
    });

    for (const std::vector<std::uint32_t>& each : found)
        EXPECT_EQ(each, expected);
}

TEST_F(RegionThreads, QuestionIsStoppedFromAnotherThread)
{
    std::stop_source stop;
    RegionQuery query;
    query.corners = star;
    query.stop = stop.get_token();
    std::atomic<bool> hasBegun = false;
    query.progress = [&hasBegun](double) { hasBegun = true; };
    std::thread stopping([&] {
        while (!hasBegun)
            std::this_thread::yield();
        stop.request_stop();
    });

    const auto askUntilStopped = [&] {
        for (;;)
            ask(query);
    };

    EXPECT_THROW(askUntilStopped(), RegionStopped);
    stopping.join();
}

TEST_F(RegionThreads, CloudThatIsDroppedMeanwhileStaysForWhoHoldsIt)
{
    auto shared = std::make_shared<const CloudPoints>(points, Box(0, 0, 0, 1000, 1000, 500));
    const std::vector<std::uint32_t> expected = byLoop();
    std::atomic<unsigned> holding = 0;
    std::vector<std::uint32_t> found[askers];
    std::thread dropping([&] {
        while (holding < askers)
            std::this_thread::yield();
        shared.reset();
    });

    onSeveralThreads([&](unsigned i) {
        const std::shared_ptr<const CloudPoints> held = shared;
        ++holding;
        RegionQuery query;
        query.corners = star;
        const RegionTest test(query, region, ObjectInView(view, {}, {1, 1, 1}));
        RegionWork work(query);
        found[i] = RegionPoints(*held, &hidden, test, nullptr, work).takeNumbers();
    });

    dropping.join();
    for (const std::vector<std::uint32_t>& each : found)
        EXPECT_EQ(each, expected);
}

TEST(ShapeBorders, SeveralThreadsAskFirst)
{
    const TopoDS_Shape shape = BRepPrimAPI_MakeCylinder(30, 80).Shape();
    BRepMesh_IncrementalMesh(shape, 0.5);
    std::vector<std::unique_ptr<SensitiveFace>> owned;
    std::vector<BVHPrimitive*> faces;
    for (TopExp_Explorer face(shape, TopAbs_FACE); face.More(); face.Next()) {
        owned.push_back(
            std::make_unique<SensitiveFace>(TopoDS::Face(face.Current()), static_cast<unsigned>(owned.size() + 1)));
        faces.push_back(owned.back().get());
    }
    const ShapeBorders borders(shape, faces);
    const BVHNode* roots[askers] = {};

    onSeveralThreads([&](unsigned i) { roots[i] = borders.getRoot(); });

    EXPECT_THAT(roots, testing::Each(roots[0]));
    ASSERT_NE(roots[0], nullptr);
    std::vector<BVHPrimitive*> pieces;
    roots[0]->collectPrimitives(pieces);
    const auto vertices = std::ranges::count_if(
        pieces, [](const BVHPrimitive* piece) { return static_cast<const ShapeBorders::Piece*>(piece)->isVertex; });
    EXPECT_EQ(vertices, 2);
    EXPECT_EQ(borders.getEdges().size(), 3u); // two circles and the seam
}

} // namespace
} // namespace vrk::selection
