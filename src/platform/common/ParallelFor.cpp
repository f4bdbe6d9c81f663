#include "platform/common/ParallelFor.h"

#include "platform/common/Cores.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <future>
#include <vector>

namespace vrk {

void parallelFor(std::size_t count, const std::function<void(std::size_t, std::size_t)>& work)
{
    constexpr std::size_t chunksPerThread = 32;
    const std::size_t threads = std::min<std::size_t>(coreCount(), count);
    if (threads <= 1) {
        if (count > 0)
            work(0, count);
        return;
    }
    const std::size_t chunks = std::min(count, threads * chunksPerThread);
    std::atomic<std::size_t> next = 0;
    const auto takeChunks = [&] {
        try {
            for (std::size_t chunk = next++; chunk < chunks; chunk = next++)
                work(chunk * count / chunks, (chunk + 1) * count / chunks);
        } catch (...) {
            next = chunks;
            throw;
        }
    };
    std::vector<std::future<void>> others;
    for (std::size_t i = 1; i < threads; ++i)
        others.push_back(std::async(std::launch::async | std::launch::deferred, takeChunks));
    std::exception_ptr failure;
    const auto guarded = [&failure](const auto& call) {
        try {
            call();
        } catch (...) {
            if (!failure)
                failure = std::current_exception();
        }
    };
    guarded(takeChunks);
    for (std::future<void>& other : others)
        guarded([&other] { other.get(); });
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace vrk
