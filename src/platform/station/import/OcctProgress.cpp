#include "platform/station/import/OcctProgress.h"

#include "platform/station/import/ImportFormats.h"

#include <utility>

namespace vrk::station {
namespace {

constexpr std::chrono::milliseconds reportInterval{50}; // a cancel takes effect about as soon

} // namespace

OcctProgress::OcctProgress(const Progress& progress, std::string step, double from, double to)
    : progress(progress), step(std::move(step)), from(from), to(to)
{
}

void OcctProgress::rethrow() const
{
    if (thrown)
        std::rethrow_exception(thrown);
}

void OcctProgress::Show(const Message_ProgressScope&, Standard_Boolean)
{
    if (std::this_thread::get_id() != importer || isBroken || Clock::now() - lastReport < reportInterval)
        return;
    try {
        report(progress, step, from + (to - from) * GetPosition());
    } catch (...) {
        thrown = std::current_exception();
        __atomic_store_n(&isBroken, true, __ATOMIC_RELAXED);
    }
    lastReport = Clock::now();
}

} // namespace vrk::station
