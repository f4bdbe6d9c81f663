#include "scene/core/OwedTasks.h"

#include "platform/broker/SignalBroker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace vrk::visual {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class OwedTasksTest : public testing::Test {
protected:
    RenderTaskQueue::Task note(int number)
    {
        return [this, number] { ran.push_back(number); };
    }
    /// Runs the queue with a failing task ahead of what `post` posts.
    template <typename Post>
    void loseBatch(const Post& post)
    {
        queue.post([] { throw std::runtime_error("broken"); }, 0);
        post();
        EXPECT_THROW(queue.run(), std::runtime_error);
    }
    template <typename Call>
    static int postsOf(const Call& call)
    {
        int posts = 0;
        const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] { ++posts; });
        call();
        return posts;
    }

    RenderTaskQueue queue;
    OwedTasks owed{queue};
    std::vector<int> ran;
};

TEST_F(OwedTasksTest, TaskThatRanIsNotOwed)
{
    owed.post(note(1));
    queue.run();

    EXPECT_EQ(postsOf([this] { owed.postWhatIsOwed(); }), 0);
    EXPECT_THAT(ran, ElementsAre(1));
}

TEST_F(OwedTasksTest, TaskThatWaitsIsNotOwed)
{
    owed.post(note(1));

    EXPECT_EQ(postsOf([this] { owed.postWhatIsOwed(); }), 0);
}

TEST_F(OwedTasksTest, DroppedTasksAreDoneOnceInTheirOrderWhenTheyAreAskedFor)
{
    loseBatch([this] {
        owed.post(note(1));
        owed.post(note(2), note(3));
    });
    EXPECT_THAT(ran, IsEmpty());

    EXPECT_EQ(postsOf([this] { owed.postWhatIsOwed(); }), 1);
    EXPECT_EQ(postsOf([this] { owed.postWhatIsOwed(); }), 0) << "it is on its way";
    queue.run();
    EXPECT_THAT(ran, ElementsAre(1, 3));

    EXPECT_EQ(postsOf([this] { owed.postWhatIsOwed(); }), 0);
}

TEST_F(OwedTasksTest, WhatIsAskedForInVainIsStillOwed)
{
    loseBatch([this] { owed.post(note(1)); });
    loseBatch([this] { owed.postWhatIsOwed(); });
    EXPECT_THAT(ran, IsEmpty());

    owed.postWhatIsOwed();
    queue.run();

    EXPECT_THAT(ran, ElementsAre(1));
}

TEST_F(OwedTasksTest, TaskThatFailsInItsTurnIsNotTriedAgainAndLeavesTheOthersOwed)
{
    loseBatch([this] {
        owed.post([] { throw std::logic_error("in its turn"); });
        owed.post(note(2));
    });
    owed.postWhatIsOwed();
    EXPECT_THROW(queue.run(), std::logic_error);

    owed.postWhatIsOwed();
    queue.run();

    EXPECT_THAT(ran, ElementsAre(2));
}

TEST_F(OwedTasksTest, QueueMayDieWithTasksInIt)
{
    {
        RenderTaskQueue passing;
        OwedTasks ofPassing(passing);
        ofPassing.post(note(1));
        ofPassing.post(note(2), note(3));
    }

    EXPECT_THAT(ran, IsEmpty());
}

TEST_F(OwedTasksTest, EachTaskOfManyThreadsIsDoneOnceAlthoughBatchesFail)
{
    constexpr int threadCount = 3;
    constexpr int each = 2000;
    std::vector<int> done(threadCount * each); // render thread
    std::vector<std::jthread> threads;
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < each; ++i) {
                owed.postWhatIsOwed();
                if (i % 10 == 0)
                    queue.post([] { throw std::runtime_error("broken"); }, 0);
                owed.post([&done, place = static_cast<std::size_t>(t * each + i)] { ++done[place]; });
            }
        });
    const auto runOnce = [this] {
        try {
            queue.run();
            return true;
        } catch (const std::runtime_error&) {
            return false; // as the application's loop goes on after a failed batch
        }
    };
    for (int i = 0; i < 1000; ++i)
        runOnce();
    threads.clear();
    while (!runOnce())
        ;
    owed.postWhatIsOwed();
    queue.run();

    EXPECT_THAT(done, testing::Each(1));
}

} // namespace
} // namespace vrk::visual
