#pragma once

#include "selection/region/RegionQuery.h"

#include <algorithm>
#include <cstdint>
#include <mutex>

namespace vrk::selection {

/// Ends a question from inside.
struct RegionStopped {};

/// How far a question has come. Thread: any.
class RegionWork {
public:
    explicit RegionWork(const RegionQuery& query) : query(query) {}

    /// Steps that are still to come.
    void expect(std::uint64_t steps)
    {
        const std::lock_guard lock(telling);
        total += steps;
    }
    /// @throws RegionStopped if the question is to end, and what the caller's function throws.
    void advance(std::uint64_t steps)
    {
        if (query.stop.stop_requested())
            throw RegionStopped();
        if (!query.progress)
            return;
        const std::lock_guard lock(telling);
        done += steps;
        // The steps are an estimate: only the end is the end.
        query.progress(
            std::min(0.99, static_cast<double>(done) / static_cast<double>(std::max<std::uint64_t>(total, 1))));
    }
    void finish()
    {
        if (query.progress)
            query.progress(1);
    }

private:
    const RegionQuery& query;
    std::mutex telling;
    std::uint64_t total = 0, done = 0;
};

} // namespace vrk::selection
