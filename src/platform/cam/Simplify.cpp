#include "platform/cam/Simplify.h"

#include "platform/cam/EdgeCollapse.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace vrk::cam {
namespace {

constexpr double almostAll = 0.99; // what is left is for looking at the result, and for further rounds

} // namespace

std::optional<TriangleSurface> simplify(const TriangleSurface& surface, const SimplifyOptions& options)
{
    if (!(options.tolerance >= 0))
        throw std::invalid_argument("a tolerance is 0 or more");
    SimplifyOptions rising = options;
    double told = 0;
    if (options.progress)
        rising.progress = [&](double fraction) {
            told = std::max(told, std::min(fraction, almostAll));
            options.progress(told);
        };
    std::vector<EdgeCollapse::Number> held;
    std::unique_ptr<EdgeCollapse> before;
    while (true) {
        auto collapse = std::make_unique<EdgeCollapse>(surface, rising, held, before.get());
        if (!collapse->run())
            return {};
        const std::vector<EdgeCollapse::Number> beyond = collapse->verticesBeyond();
        if (options.stop.stop_requested())
            return {};
        const std::size_t heldBefore = held.size();
        held.insert(held.end(), beyond.begin(), beyond.end());
        std::ranges::sort(held);
        const auto doubled = std::ranges::unique(held);
        held.erase(doubled.begin(), doubled.end());
        // Each round holds more of the surface as it is, so that there is an end to them.
        if (held.size() == heldBefore) {
            if (options.progress)
                options.progress(1);
            return collapse->result();
        }
        before = std::move(collapse);
    }
}

} // namespace vrk::cam
