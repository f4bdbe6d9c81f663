#pragma once

#include "platform/station/Import.h"

#include <Message_ProgressIndicator.hxx>

#include <chrono>
#include <exception>
#include <string>
#include <thread>

/// Not installed.
namespace vrk::station {

/// Hands the progress of an Open CASCADE algorithm on to the caller of an import, as a share of the whole import.
///
/// An exception of the callback cannot pass through the algorithm, which may be at work on several threads: it ends the
/// algorithm as a user's break does, and `rethrow` brings it back.
class OcctProgress : public Message_ProgressIndicator {
    DEFINE_STANDARD_RTTI_INLINE(OcctProgress, Message_ProgressIndicator)

public:
    /// @param progress  outlives this. Called on the thread that makes this, and on no other.
    /// @param from, to  of the whole import.
    OcctProgress(const Progress& progress, std::string step, double from, double to);

    /// Call it when the algorithm is back, before its result is looked at.
    void rethrow() const;

protected:
    // Asked on the threads of Open CASCADE's pool. Neither is built for the thread sanitizer, which thus does not see that
    // they begin after this object was made.
    __attribute__((no_sanitize("thread"))) Standard_Boolean UserBreak() override
    {
        return __atomic_load_n(&isBroken, __ATOMIC_RELAXED);
    }
    void Show(const Message_ProgressScope& scope, Standard_Boolean isForced) override;

private:
    using Clock = std::chrono::steady_clock;

    const Progress& progress;
    const std::string step;
    const double from;
    const double to;
    const std::thread::id importer = std::this_thread::get_id();
    Clock::time_point lastReport = Clock::now();
    std::exception_ptr thrown;
    bool isBroken = false; // written by the importing thread
};

} // namespace vrk::station
