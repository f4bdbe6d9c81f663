// The render task queue against boost::asio::post, and keyed posts against posts without a key.

#include "bench/support/Size.h"

#include "platform/broker/SignalBroker.h"
#include "scene/core/RenderTaskQueue.h"

#include <benchmark/benchmark.h>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>

#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

constexpr std::uint64_t producers = 4;
const std::uint64_t postsEach = vrk::bench::sized(500'000, 5'000);
const std::uint64_t posts = producers * postsEach;

/// What every task adds up to: the sum of a and b over all posts.
const std::uint64_t expectedSum = producers * (postsEach * (postsEach - 1) / 2) + posts;

template <typename Post>
std::vector<std::jthread> startProducers(std::atomic<std::uint64_t>& sum, const Post& post)
{
    std::vector<std::jthread> threads;
    for (std::uint64_t p = 0; p < producers; ++p)
        threads.emplace_back([&sum, &post] {
            for (std::uint64_t i = 0; i < postsEach; ++i)
                post([total = &sum, a = i, b = std::uint64_t{1}] {
                    total->fetch_add(a + b, std::memory_order_relaxed);
                });
        });
    return threads;
}

void check(const std::atomic<std::uint64_t>& sum)
{
    if (sum != expectedSum)
        throw std::logic_error("tasks were lost");
}

void fourProducersOurs(benchmark::State& state)
{
    std::atomic<bool> told{false};
    const boost::signals2::scoped_connection receiver =
        vrk::broker::SignalBroker::onUpdateScene([&told] { told.store(true, std::memory_order_relaxed); });
    for (auto _ : state) {
        vrk::visual::RenderTaskQueue queue;
        std::atomic<std::uint64_t> sum{0};
        const auto post = [&queue](auto&& task) { queue.post(std::forward<decltype(task)>(task), 0); };
        const std::vector<std::jthread> threads = startProducers(sum, post);
        while (sum.load(std::memory_order_relaxed) != expectedSum)
            queue.run();
        check(sum);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * posts));
}

void fourProducersAsio(benchmark::State& state)
{
    for (auto _ : state) {
        boost::asio::io_context context(1); // one thread runs it
        std::atomic<std::uint64_t> sum{0};
        auto work = boost::asio::make_work_guard(context);
        const auto post = [&context](auto&& task) { boost::asio::post(context, std::forward<decltype(task)>(task)); };
        std::vector<std::jthread> threads = startProducers(sum, post);
        std::jthread closing([&] {
            threads.clear();
            work.reset();
        });
        context.run();
        check(sum);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * posts));
}

const int keyedPosts = vrk::bench::sized(100'000, 1'000);
constexpr std::uint64_t keys = 100;

/// @param keyed  whether the posts share 100 keys.
void onePoster(benchmark::State& state, bool keyed)
{
    for (auto _ : state) {
        vrk::visual::RenderTaskQueue queue;
        int ran = 0;
        for (int i = 0; i < keyedPosts; ++i)
            queue.post([&ran, i] { ran += i >= 0 ? 1 : 0; }, keyed ? 1 + static_cast<std::uint64_t>(i) % keys : 0);
        queue.run();
        if (ran != (keyed ? static_cast<int>(keys) : keyedPosts))
            throw std::logic_error("a wrong number of tasks ran");
    }
    state.SetItemsProcessed(state.iterations() * keyedPosts);
}

void postsWithoutKey(benchmark::State& state)
{
    onePoster(state, false);
}

void postsUnderAHundredKeys(benchmark::State& state)
{
    onePoster(state, true);
}

BENCHMARK(fourProducersOurs)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(fourProducersAsio)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(postsWithoutKey)->Unit(benchmark::kMillisecond);
BENCHMARK(postsUnderAHundredKeys)->Unit(benchmark::kMillisecond);

} // namespace
