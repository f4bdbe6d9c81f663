#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <ctime>
#include <map>
#include <string>
#include <vector>

namespace vrk::bench {

/// The value below which a share of the samples lies.
inline double quantile(std::vector<double> samples, double share)
{
    const auto at = samples.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(samples.size() - 1));
    std::nth_element(samples.begin(), at, samples.end());
    return *at;
}

/// Times `call` in milliseconds.
template <typename Call>
double millisecondsOf(const Call& call)
{
    const auto before = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - before).count();
}

/// The milliseconds that all threads of this process work for `call`: what a busy machine does not draw out.
template <typename Call>
double workOf(const Call& call)
{
    const auto now = [] {
        timespec at{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &at);
        return 1e3 * static_cast<double>(at.tv_sec) + 1e-6 * static_cast<double>(at.tv_nsec);
    };
    const double before = now();
    call();
    return now() - before;
}

/// Several ways of doing the same work, which take turns in one program: a machine whose speed drifts favours none.
class Contest {
public:
    void add(const std::string& name, double sample) { samples[name].push_back(sample); }

    /// A clock around each of the picks; reading it costs some 25 ns, for everyone.
    /// @param pick  called with each number below `count`.
    template <typename Pick>
    void timePicks(const std::string& name, std::size_t count, const Pick& pick)
    {
        std::vector<double>& mine = samples[name];
        for (std::size_t i = 0; i < count; ++i)
            mine.push_back(1e6 * millisecondsOf([&] { pick(i); }));
    }
    double of(const std::string& name, double share = 0.5) const { return quantile(samples.at(name), share); }

    /// A counter for each contender, and one for how many times the reference's time ours is.
    void report(benchmark::State& state, const std::string& unit, const std::string& reference,
                double share = 0.5) const
    {
        for (const auto& [name, unused] : samples)
            state.counters[name + " " + unit] = of(name, share);
        state.counters["ours/" + reference + " " + unit] = of("ours", share) / of(reference, share);
    }

private:
    std::map<std::string, std::vector<double>> samples;
};

} // namespace vrk::bench
