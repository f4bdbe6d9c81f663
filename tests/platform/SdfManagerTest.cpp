#include "platform/sdf/SdfManager.h"

#include "platform/sdf/SdfObject.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <thread>
#include <vector>

namespace sdf {
namespace {

using vrk::rob::Posd;
using vrk::rob::Posed;

class SdfManagerTest : public testing::Test {
protected:
    ~SdfManagerTest() override
    {
        const std::unique_lock lock(manager.mutex());
        manager.clear();
    }

    SdfManager& manager = SdfManager::inst();
};

std::shared_ptr<SdfNode> node(unsigned id, const std::string& name = "node")
{
    return std::make_shared<SdfNode>(ModelType::Frame, id, name);
}

TEST_F(SdfManagerTest, AddedObjectIsFoundUntilItIsRemoved)
{
    const std::shared_ptr<SdfNode> object = node(77);
    const std::unique_lock lock(manager.mutex());
    manager.add(object);

    EXPECT_EQ(manager.find(77), object.get());
    EXPECT_EQ(manager.share(77), object);
    EXPECT_EQ(manager.size(), 1u);

    manager.remove(77);
    EXPECT_EQ(manager.find(77), nullptr);
    EXPECT_EQ(manager.share(77), nullptr);
}

TEST_F(SdfManagerTest, LaterObjectTakesTheIdOver)
{
    const std::shared_ptr<SdfNode> later = node(77, "later");
    const std::unique_lock lock(manager.mutex());
    manager.add(node(77, "first"));
    manager.add(later);

    EXPECT_EQ(manager.find(77), later.get());
    EXPECT_EQ(manager.size(), 1u);
}

TEST_F(SdfManagerTest, RemovingAnUnknownIdDoesNothing)
{
    const std::unique_lock lock(manager.mutex());
    manager.remove(12345);

    EXPECT_EQ(manager.size(), 0u);
}

TEST_F(SdfManagerTest, IdsOfTheTableAreNotGivenAgain)
{
    const unsigned last = manager.generateId();
    {
        const std::unique_lock lock(manager.mutex());
        manager.add(node(last + 1));
        manager.add(node(last + 2));
    }

    EXPECT_EQ(manager.generateId(), last + 3);
}

TEST_F(SdfManagerTest, TransientIdsLieInTheUpperHalf)
{
    const unsigned first = SdfManager::GenerateTransientId();
    const unsigned second = SdfManager::GenerateTransientId();

    EXPECT_GE(first, 0x80000000u);
    EXPECT_NE(first, second);
    EXPECT_LT(manager.generateId(), 0x80000000u);
}

TEST_F(SdfManagerTest, ThreadsDrawDifferentIdsWhileTheTableChanges)
{
    constexpr int threadCount = 4;
    constexpr int draws = 500;
    std::vector<std::vector<unsigned>> ids(threadCount);

    std::vector<std::jthread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([this, &mine = ids[t]] {
            for (int i = 0; i < draws; ++i) {
                mine.push_back(manager.generateId());
                mine.push_back(SdfManager::GenerateTransientId());
                if (i % 10 == 0) {
                    const std::unique_lock lock(manager.mutex());
                    manager.add(node(mine[mine.size() - 2]));
                } else if (i % 10 == 5) {
                    const std::shared_lock lock(manager.mutex());
                    EXPECT_NE(manager.find(mine[mine.size() - 12]), nullptr);
                }
            }
        });
    }
    threads.clear();

    std::vector<unsigned> all;
    for (const std::vector<unsigned>& mine : ids)
        all.insert(all.end(), mine.begin(), mine.end());
    std::ranges::sort(all);
    EXPECT_EQ(std::ranges::adjacent_find(all), all.end());
    EXPECT_EQ(all.size(), 2u * threadCount * draws);
}

TEST_F(SdfManagerTest, PoseOfAnObjectIsReadUnderTheLock)
{
    const std::shared_ptr<SdfNode> object = node(77);
    object->setPose(Posed(Posd(1, 2, 3)));
    {
        const std::unique_lock lock(manager.mutex());
        manager.add(object);
    }

    EXPECT_EQ(GetPose(77), Posed(Posd(1, 2, 3)));
}

TEST_F(SdfManagerTest, PoseOfAnUnknownObjectIsIdentity)
{
    EXPECT_EQ(GetPose(4711), Posed());
}

} // namespace
} // namespace sdf
