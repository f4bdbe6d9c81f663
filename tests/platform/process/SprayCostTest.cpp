#include "Plates.h"
#include "platform/process/Coat.h"
#include "support/Allocations.h"
#include "support/ProcessorTime.h"

#include <algorithm>

namespace vrk::process {
namespace {

TEST(SprayCost, StepsAllocateNothingInTheSteadyState)
{
    const test::Plate plate(500, 200);
    Coat coat(plate.vertices, plate.normals);
    const SprayWay way({{{-200, 0, 100}, {0, 0, -1}}, {{200, 0, 100}, {0.2, 0, -1}}}, 100);
    const SprayGun gun;
    std::vector<unsigned> touched;
    const auto step = [&](double at) {
        touched.clear();
        coat.sprayAlong(gun, way, at, at + 4, 1, touched);
    };
    for (double at = 0; at < 400; at += 4)
        step(at);
    ASSERT_FALSE(touched.empty());

    const test::Cost cost = test::costOf([&] {
        for (double at = 0; at < 396; at += 4)
            step(at);
    });

    EXPECT_EQ(cost, test::Cost());
}

TEST(SprayCost, StepLooksAtTheConeAndNotAtTheWholeMesh)
{
    // Plates with vertices equally close: the larger has 64 times as many, and the cone meets as many of both.
    const test::Plate small(100, 50), large(800, 400);
    const auto secondsOf = [](const test::Plate& plate) {
        Coat coat(plate.vertices, plate.normals);
        std::vector<unsigned> touched;
        double best = 1;
        for (int round = 0; round < 15; ++round) {
            touched.clear();
            best = std::min(best, test::threadSecondsOf([&] {
                                for (int i = 0; i < 20; ++i)
                                    coat.spray({}, {{0, 0, 100}, {0, 0, -1}}, 0.01, touched);
                            }));
        }
        return best;
    };

    EXPECT_LT(secondsOf(large), 6 * secondsOf(small));
}

} // namespace
} // namespace vrk::process
