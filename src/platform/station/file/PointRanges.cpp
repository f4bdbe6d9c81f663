#include "platform/station/file/PointRanges.h"

#include <fmt/format.h>

#include <charconv>
#include <iterator>

namespace vrk::station {
namespace {

/// Digits only, without zeros in front.
bool takeNumber(std::string_view& text, std::uint32_t& number)
{
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || (text.front() == '0' && rest != text.data() + 1))
        return false;
    text.remove_prefix(static_cast<std::size_t>(rest - text.data()));
    return true;
}

} // namespace

std::string rangesText(const layout::PointSet& points)
{
    std::string text;
    const std::vector<std::uint32_t> numbers = points.numbers();
    for (std::size_t i = 0; i < numbers.size();) {
        const std::size_t first = i;
        while (i + 1 < numbers.size() && numbers[i + 1] == numbers[i] + 1)
            ++i;
        fmt::format_to(std::back_inserter(text), "{}{}", first > 0 ? "," : "", numbers[first]);
        if (i > first)
            fmt::format_to(std::back_inserter(text), "-{}", numbers[i]);
        ++i;
    }
    return text;
}

std::optional<std::vector<std::pair<std::uint32_t, std::uint32_t>>> parseRanges(std::string_view text)
{
    std::vector<std::pair<std::uint32_t, std::uint32_t>> ranges;
    while (true) {
        std::uint32_t first = 0;
        if (!takeNumber(text, first))
            return std::nullopt;
        std::uint32_t last = first;
        if (text.starts_with('-')) {
            text.remove_prefix(1);
            if (!takeNumber(text, last) || last <= first)
                return std::nullopt;
        }
        // One that goes on where the one before ends belongs to that.
        if (!ranges.empty() && first <= std::uint64_t{ranges.back().second} + 1)
            return std::nullopt;
        ranges.emplace_back(first, last);
        if (text.empty())
            return ranges;
        if (!text.starts_with(','))
            return std::nullopt;
        text.remove_prefix(1);
    }
}

} // namespace vrk::station
