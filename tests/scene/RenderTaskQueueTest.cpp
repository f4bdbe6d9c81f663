#include "scene/core/RenderTaskQueue.h"

#include "platform/broker/SignalBroker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

namespace vrk::visual {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RenderTaskQueueTest : public testing::Test {
protected:
    RenderTaskQueue::Task note(int number)
    {
        return [this, number] { ran.push_back(number); };
    }

    RenderTaskQueue queue;
    std::vector<int> ran;
};

struct CountedUpdates {
    int count = 0;
    boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([this] { ++count; });
};

TEST_F(RenderTaskQueueTest, TasksRunInTheOrderOfTheirPosts)
{
    for (int i = 0; i < 5; ++i)
        queue.post(note(i), 0);

    queue.run();

    EXPECT_THAT(ran, ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(RenderTaskQueueTest, SecondPostOfAKeyDropsTheFirstAndGoesToTheEnd)
{
    queue.post(note(1), 7);
    queue.post(note(2), 8);
    queue.post(note(3), 7);

    queue.run();

    EXPECT_THAT(ran, ElementsAre(2, 3));
}

TEST_F(RenderTaskQueueTest, PostWithoutKeyRemovesNothing)
{
    const RenderTaskQueue::Task task = note(1);
    queue.post(RenderTaskQueue::Task(task), 0);
    queue.post(RenderTaskQueue::Task(task), 0);

    queue.run();

    EXPECT_THAT(ran, ElementsAre(1, 1));
}

TEST_F(RenderTaskQueueTest, KeyIsFreeAgainAfterARun)
{
    queue.post(note(1), 7);
    queue.run();
    queue.post(note(2), 7);

    queue.run();

    EXPECT_THAT(ran, ElementsAre(1, 2));
}

TEST_F(RenderTaskQueueTest, TaskPostedByATaskRunsInTheNextCall)
{
    queue.post(
        [this] {
            ran.push_back(1);
            queue.post(note(2), 0);
        },
        0);

    queue.run();
    EXPECT_THAT(ran, ElementsAre(1));

    queue.run();
    EXPECT_THAT(ran, ElementsAre(1, 2));
}

TEST_F(RenderTaskQueueTest, TaskMayRunTheQueueAndRunsWhatWasPostedSince)
{
    queue.post(
        [this] {
            queue.post(note(1), 0);
            queue.run();
            ran.push_back(2);
        },
        0);
    queue.post(note(3), 0);

    queue.run();
    queue.post(note(4), 0);
    queue.run();

    EXPECT_THAT(ran, ElementsAre(1, 2, 3, 4));
}

TEST_F(RenderTaskQueueTest, BatchesOfAllLengthsFollowEachOther)
{
    std::vector<int> expected;
    for (const int length : {3, 100'000, 0, 5, 70'000, 1}) {
        ran.clear();
        expected.clear();
        for (int i = 0; i < length; ++i) {
            queue.post(note(i), 0);
            expected.push_back(i);
        }

        queue.run();

        EXPECT_EQ(ran, expected) << length;
    }
}

TEST_F(RenderTaskQueueTest, ThrowingTaskDropsTheRestOfItsBatchOnly)
{
    queue.post([] { throw std::runtime_error("broken"); }, 0);
    queue.post(note(1), 0);
    EXPECT_THROW(queue.run(), std::runtime_error);

    queue.post(note(2), 0);
    queue.run();

    EXPECT_THAT(ran, ElementsAre(2));
}

TEST_F(RenderTaskQueueTest, EmptyTaskRaisesBadFunctionCall)
{
    queue.post(nullptr, 0);

    EXPECT_THROW(queue.run(), std::bad_function_call);
}

TEST_F(RenderTaskQueueTest, EachPostRaisesUpdateScene)
{
    const CountedUpdates updates;

    queue.post(note(1), 0);
    queue.post(note(2), 5);

    EXPECT_EQ(updates.count, 2);
}

TEST_F(RenderTaskQueueTest, SignalOfAPostIsRaisedWithTheQueueLocked)
{
    std::atomic<bool> isFirst{true};
    std::atomic<bool> hasPosted{false};
    bool hadPosted = true;
    std::jthread other;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] {
        if (!isFirst.exchange(false))
            return; // the signal of the other thread's own post
        other = std::jthread([&] {
            queue.post(note(2), 0);
            hasPosted = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(50)); // ample for a post that nothing keeps waiting
        hadPosted = hasPosted;
    });

    queue.post(note(1), 0);
    other.join();
    queue.run();

    EXPECT_FALSE(hadPosted) << "another thread's post waits until all have heard of this one";
    EXPECT_THAT(ran, ElementsAre(1, 2));
}

TEST_F(RenderTaskQueueTest, DirtyInstancesAskForOneMoreFrameOnce)
{
    queue.post(
        [this] {
            queue.setInstanceDirty();
            queue.setInstanceDirty();
        },
        0);
    const CountedUpdates updates;

    queue.run();
    EXPECT_EQ(updates.count, 1);

    queue.run();
    EXPECT_EQ(updates.count, 1);
}

TEST_F(RenderTaskQueueTest, DirtyInstancesOutliveAThrowingTask)
{
    queue.post([this] { queue.setInstanceDirty(); }, 0);
    queue.post([] { throw std::runtime_error("broken"); }, 0);
    const CountedUpdates updates;
    EXPECT_THROW(queue.run(), std::runtime_error);
    EXPECT_EQ(updates.count, 0);

    queue.run();

    EXPECT_EQ(updates.count, 1);
}

TEST_F(RenderTaskQueueTest, RunWithoutPostsDoesNothing)
{
    const CountedUpdates updates;

    queue.run();

    EXPECT_EQ(updates.count, 0);
    EXPECT_THAT(ran, IsEmpty());
}

/// Posts when it dies, as a capture may.
struct PostsOnDestruction {
    RenderTaskQueue* queue;
    std::vector<int>* ran;
    ~PostsOnDestruction()
    {
        queue->post([log = ran] { log->push_back(9); }, 0);
    }
};

TEST_F(RenderTaskQueueTest, CaptureThatPostsOnItsDestructionPostsForTheNextCall)
{
    queue.post([this, last = std::make_shared<PostsOnDestruction>(&queue, &ran)] { ran.push_back(1); }, 0);

    queue.run();
    EXPECT_THAT(ran, ElementsAre(1));

    queue.run();
    EXPECT_THAT(ran, ElementsAre(1, 9));
}

TEST_F(RenderTaskQueueTest, SupersededCaptureMayPostOnItsDestruction)
{
    queue.post([last = std::make_shared<PostsOnDestruction>(&queue, &ran)] {}, 3);

    queue.post(note(1), 3);
    queue.run();

    EXPECT_THAT(ran, ElementsAre(1, 9));
}

TEST_F(RenderTaskQueueTest, LongQueueOfFewKeysKeepsOneTaskOfEachInPostingOrder)
{
    constexpr int keys = 100;
    constexpr int posts = 10'000;
    for (int i = 0; i < posts; ++i)
        queue.post(note(i), static_cast<std::uint64_t>(1 + (i * 37) % keys));

    queue.run();

    ASSERT_EQ(ran.size(), std::size_t{keys});
    for (int i = 0; i < keys; ++i)
        EXPECT_EQ(ran[static_cast<std::size_t>(i)], posts - keys + i);
}

TEST_F(RenderTaskQueueTest, MixedKeysAgreeWithAPlainList)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        ran.clear();
        std::vector<std::pair<std::uint64_t, int>> expected;
        unsigned state = seed;
        for (int i = 0; i < 1000; ++i) {
            state = state * 1664525u + 1013904223u;
            const std::uint64_t key = (state >> 16) % 8;
            if (key != 0)
                std::erase_if(expected, [key](const auto& entry) { return entry.first == key; });
            expected.emplace_back(key, i);
            queue.post(note(i), key);
        }

        queue.run();

        std::vector<int> numbers;
        for (const auto& entry : expected)
            numbers.push_back(entry.second);
        EXPECT_EQ(ran, numbers);
    }
}

TEST_F(RenderTaskQueueTest, ManyThreadsPostWhileOneDrains)
{
    constexpr int producers = 4;
    constexpr int each = 5000;
    std::atomic<int> sum{0};
    std::atomic<int> done{0};
    std::vector<std::jthread> threads;
    for (int p = 0; p < producers; ++p)
        threads.emplace_back([&, p] {
            for (int i = 0; i < each; ++i)
                queue.post([&sum] { ++sum; }, i % 3 == 0 ? static_cast<std::uint64_t>(1000 + p) : 0);
            ++done;
        });

    while (done < producers)
        queue.run();
    threads.clear();
    queue.run();

    // Every task without a key ran; of the keyed ones at least the last of each thread.
    constexpr int keyed = (each + 2) / 3;
    EXPECT_GE(sum, producers * (each - keyed + 1));
    EXPECT_LE(sum, producers * each);
}

TEST_F(RenderTaskQueueTest, FailureIsToldWithTheOperationThatPosted)
{
    const auto fail = [] { throw std::runtime_error("broken"); };
    queue.post(fail, 0, "void vrk::visual::Scene::addFrame(sdf::SdfNode*)");
    queue.post(fail, 0, nullptr);
    queue.post([] { throw 5; }, 0, "std::vector<int> other::work(int)::<lambda()>");
    queue.post(note(1), 0);
    std::vector<std::string> told;

    queue.run([&told](const RenderTaskQueue::Failure& failure) { told.push_back(failure.text); });

    EXPECT_THAT(told, ElementsAre("Scene::addFrame: broken", "a task: broken",
                                  "other::work: something that is no exception of the standard library"));
    EXPECT_THAT(ran, ElementsAre(1));
}

} // namespace
} // namespace vrk::visual
