#include "platform/common/ParallelFor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace vrk {
namespace {

using testing::Each;
using testing::StrEq;
using testing::ThrowsMessage;

using Chunk = std::pair<std::size_t, std::size_t>;

std::vector<Chunk> chunksOf(std::size_t count)
{
    std::mutex mutex;
    std::vector<Chunk> chunks;
    parallelFor(count, [&](std::size_t begin, std::size_t end) {
        const std::lock_guard lock(mutex);
        chunks.emplace_back(begin, end);
    });
    return chunks;
}

TEST(ParallelFor, NothingToDoCallsNothing)
{
    EXPECT_TRUE(chunksOf(0).empty());
}

TEST(ParallelFor, OneItemIsOneCallOnThisThread)
{
    std::vector<std::thread::id> callers;
    parallelFor(1, [&](std::size_t begin, std::size_t end) {
        EXPECT_EQ(Chunk(begin, end), Chunk(0, 1));
        callers.push_back(std::this_thread::get_id());
    });

    EXPECT_EQ(callers, std::vector{std::this_thread::get_id()});
}

TEST(ParallelFor, EveryItemIsInOneChunk)
{
    for (const std::size_t count : {2u, 3u, 63u, 64u, 65u, 1000u, 100003u}) {
        SCOPED_TRACE(testing::Message() << count << " items");
        std::vector<int> times(count); // no two threads share an item

        parallelFor(count, [&](std::size_t begin, std::size_t end) {
            for (std::size_t i = begin; i < end; ++i)
                ++times[i];
        });

        EXPECT_THAT(times, Each(1));
    }
}

TEST(ParallelFor, ThereAreAtMostThirtyTwoChunksForEachThreadAndNoneIsEmpty)
{
    const std::size_t threads = std::max(1u, std::thread::hardware_concurrency());

    const std::vector<Chunk> chunks = chunksOf(100000);

    EXPECT_LE(chunks.size(), 32 * threads);
    for (const auto& [begin, end] : chunks)
        EXPECT_LT(begin, end);
}

TEST(ParallelFor, FailureLeavesAfterAllThreadsHaveStopped)
{
    std::atomic<int> running = 0;
    std::atomic<int> started = 0;
    const auto failing = [&] {
        parallelFor(10000, [&](std::size_t begin, std::size_t) {
            ++running;
            ++started;
            if (begin == 0) {
                --running;
                throw std::runtime_error("no more");
            }
            std::this_thread::yield();
            --running;
        });
    };

    EXPECT_THAT(failing, ThrowsMessage<std::runtime_error>(StrEq("no more")));

    EXPECT_EQ(running, 0);
    EXPECT_GE(started, 1);
}

TEST(ParallelFor, FailureEndsTheHandingOut)
{
    std::atomic<int> calls = 0;
    EXPECT_THROW(parallelFor(10000,
                             [&](std::size_t, std::size_t) {
                                 ++calls;
                                 throw std::runtime_error("no more");
                             }),
                 std::runtime_error);

    EXPECT_LE(calls, static_cast<int>(std::max(1u, std::thread::hardware_concurrency()))); // one for each thread
}

} // namespace
} // namespace vrk
