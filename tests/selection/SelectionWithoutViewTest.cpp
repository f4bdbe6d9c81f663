#include "selection/VisualSelection.h"

#include <gtest/gtest.h>

/// What the service answers before the library is started.
namespace vrk::selection {
namespace {

TEST(SelectionWithoutView, ServiceIsThereFromItsInitOn)
{
    Init();
    VisualSelection* const first = VisualSelection::Get();

    Init(); // once more changes nothing
    Finish();

    EXPECT_NE(first, nullptr);
    EXPECT_EQ(VisualSelection::Get(), first);
}

TEST(SelectionWithoutView, PixelHasNoRayAndTheAnswerIsTheDefault)
{
    const VisualSelection service;

    for (const Result& result : {service.select(10, 10), service.selectPointInCloud(10, 10)}) {
        EXPECT_TRUE(result.valid);
        EXPECT_FALSE(result.hit);
        EXPECT_EQ(result.position, rob::Posf());
    }
}

TEST(SelectionWithoutView, RayOfTheCallersOwnIsAnsweredAllTheSame)
{
    const VisualSelection service;

    const Result result = service.select(Ray({1, 2, 3}, {0, 0, -1}));

    EXPECT_FALSE(result.hit);
    EXPECT_EQ(result.position, rob::Posf(1, 2, 0)); // the grid lies in xy until the scene says otherwise
    EXPECT_FALSE(service.selectPointInCloud(Ray({1, 2, 3}, {0, 0, -1})).hit);
    EXPECT_TRUE(service.sense(rob::Linef({0, 0, 0}, {1, 1, 1})).valid);
}

TEST(SelectionWithoutView, ServiceStartsCleanAndAnUpdateOfNothingIsQuiet)
{
    VisualSelection service;

    EXPECT_FALSE(service.isDirty());
    service.update();
    service.updateWorldBoxes();
    VisualSelection::MarkRenderThread();
    service.checkThread();
    EXPECT_FALSE(service.isDirty());
}

} // namespace
} // namespace vrk::selection
