#include "visual/SelectedIds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace vrk::visual {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(SelectedIds, IdsStandAsOftenAsTheyAreAdded)
{
    SelectedIds ids;
    ids.add(3);
    ids.add(1);
    ids.add(3);
    ids.addOnce(1);
    ids.addOnce(2);

    EXPECT_THAT(ids.live(), ElementsAre(3, 1, 3, 2));
    EXPECT_EQ(ids.copy(), ids.live());
    EXPECT_TRUE(ids.contains(2));
    EXPECT_FALSE(ids.contains(4));
}

TEST(SelectedIds, RemovedIdsAreTold)
{
    SelectedIds ids;
    for (const unsigned id : {5u, 1u, 4u, 2u})
        ids.add(id);

    EXPECT_THAT(ids.remove([](unsigned id) { return id > 3; }), ElementsAre(5, 4));
    EXPECT_THAT(ids.live(), ElementsAre(1, 2));

    ids.clear();
    EXPECT_THAT(ids.live(), IsEmpty());
}

TEST(SelectedIds, MayBeAskedWhileAnotherThreadSelects)
{
    SelectedIds ids;
    ids.add(1);
    std::atomic<bool> isOver{false};
    std::jthread selecting([&] {
        for (unsigned round = 0; !isOver; ++round) {
            for (unsigned id = 10; id < 60; ++id)
                ids.add(id);
            ids.remove([](unsigned id) { return id != 1; });
        }
    });

    for (int i = 0; i < 5000; ++i)
        EXPECT_TRUE(ids.contains(1));
    isOver = true;
}

} // namespace
} // namespace vrk::visual
