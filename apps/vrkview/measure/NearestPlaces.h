#pragma once

#include "edit/EditDimensions.h"

#include "platform/measure/Measure.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vrkview {

/// Measures how near bodies come to each other, one pair after the other on a thread of its own, once they are at rest.
///
/// Thread: the application's; `onNews` is called on the other one.
class NearestPlaces {
public:
    struct Answer {
        DimensionPointer dimension;
        std::optional<vrk::measure::Measurement> measured; ///< empty where it cannot be measured
        std::string failure;                               ///< says why, for the user
    };

    /// @param onNews  there are answers, or the work went on. Outlives no call of this.
    explicit NearestPlaces(std::function<void()> onNews);
    /// Stops the present work and waits for that.
    ~NearestPlaces();

    /// Asks for a dimension's value; what was asked of it before is no longer of interest.
    /// @param poses  of the objects at its ends, in the world.
    void ask(const DimensionPointer& dimension, std::vector<vrk::rob::Posed> poses);
    void forget(const DimensionPointer& dimension);
    /// Stops all that was asked: it is answered by a failure.
    void giveUp();
    bool isBusy() const;
    /// What is under way, if anything, and what part of that is done, 0 to 1.
    std::optional<std::pair<DimensionPointer, double>> current() const;
    /// The answers since the last call.
    std::vector<Answer> take();
    /// Waits for all that was asked, without waiting for rest.
    void finish();

private:
    using Clock = std::chrono::steady_clock;
    struct Task {
        DimensionPointer dimension;
        std::vector<vrk::rob::Posed> poses;
        Clock::time_point asked;
    };

    void run(const std::stop_token& ending);
    bool waitForRest(std::unique_lock<std::mutex>& lock, const std::stop_token& ending);
    static Answer answer(const Task& task, const std::stop_token& stop, const std::function<void(double)>& progress);

    const std::function<void()> onNews;
    mutable std::mutex mutex; // of all below
    std::condition_variable_any changed;
    std::vector<Task> tasks; // not begun, the oldest first
    DimensionPointer under;  // what is under way
    std::stop_source stop;   // of that
    std::atomic<double> done = 0;
    std::vector<Answer> answers;
    bool isHurried = false;
    std::jthread worker; // begun by the first question
};

} // namespace vrkview
