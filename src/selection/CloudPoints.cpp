#include "selection/CloudPoints.h"

#include <algorithm>
#include <future>
#include <thread>

namespace vrk::selection {
namespace {

constexpr std::size_t largestGroup = 1000;
constexpr std::size_t worthAThread = 100000; // points

rob::PosTemplate<float> withCoordinate(const rob::PosTemplate<float>& p, unsigned axis, float value)
{
    return {axis == 0 ? value : p.x, axis == 1 ? value : p.y, axis == 2 ? value : p.z};
}

template <unsigned axis>
float coordinate(const rob::PosTemplate<float>& p)
{
    return axis == 0 ? p.x : axis == 1 ? p.y : p.z;
}

/// Brings what lies below the border to the front, and keeps the order on both sides. There is no branch to guess: each
/// element is written to both sides, and one of them goes on.
template <unsigned axis>
std::size_t partitionAlong(rob::PosTemplate<float>* places, unsigned* numbers, std::size_t count, float border,
                           rob::PosTemplate<float>* upperPlaces, unsigned* upperNumbers)
{
    std::size_t lower = 0, upper = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const rob::PosTemplate<float> place = places[i];
        const unsigned number = numbers[i];
        places[lower] = place;
        numbers[lower] = number;
        upperPlaces[upper] = place;
        upperNumbers[upper] = number;
        const bool isLower = border > coordinate<axis>(place);
        lower += isLower ? 1 : 0;
        upper += isLower ? 0 : 1;
    }
    std::copy_n(upperPlaces, upper, places + lower);
    std::copy_n(upperNumbers, upper, numbers + lower);
    return lower;
}

} // namespace

/// Room for the upper part of each stretch that is split, at the stretch's own place, so that several are split at once.
struct CloudPoints::Scratch {
    explicit Scratch(std::size_t count) : places(count), numbers(count) {}

    Large<rob::PosTemplate<float>> places;
    Large<unsigned> numbers;
};

CloudPoints::CloudPoints(std::span<const rob::PosTemplate<float>> cloud, const Box& bounds) : cloudSize(cloud.size())
{
    takeIn(cloud);
    if (places.empty())
        return;
    Scratch scratch(places.size() > largestGroup ? places.size() : 0);
    nodes.reserve(places.size() / (largestGroup / 4) + 1);
    split(0, places.size(), {bounds.min, bounds.max}, scratch, nodes,
          std::max(1u, std::thread::hardware_concurrency()));
    nodes.shrink_to_fit();
}

void CloudPoints::takeIn(std::span<const rob::PosTemplate<float>> cloud)
{
    places.reserve(cloud.size());
    numbers.reserve(cloud.size());
    for (std::size_t i = 0; i < cloud.size(); ++i)
        if (cloud[i].isFinite()) {
            places.push_back(cloud[i]);
            numbers.push_back(static_cast<unsigned>(i));
        }
}

void CloudPoints::split(std::size_t begin, std::size_t end, const Corners& box, Scratch& scratch,
                        std::vector<Node>& into, unsigned threads)
{
    const std::size_t own = into.size();
    const unsigned axis = Box(box.min.x, box.min.y, box.min.z, box.max.x, box.max.y, box.max.z).maxDim();
    const float from = rob::Vec3Template<float>(box.min)[axis], to = rob::Vec3Template<float>(box.max)[axis];
    const float border = (from + to) * 0.5f;
    // A box that cannot be halved any more holds points that are all but one: they stay together, however many.
    if (end - begin <= largestGroup || !(border > from && border < to)) {
        into.push_back(group(begin, end, own));
        return;
    }
    const std::size_t middle = partition(begin, end, axis, border, scratch);
    const Corners lower{box.min, withCoordinate(box.max, axis, border)};
    const Corners upper{withCoordinate(box.min, axis, border), box.max};
    if (middle == begin)
        return split(middle, end, upper, scratch, into, threads);
    if (middle == end)
        return split(begin, middle, lower, scratch, into, threads);

    into.push_back({});
    if (threads > 1 && end - begin >= worthAThread) {
        std::vector<Node> above;
        // Without the means for another thread, the other half is split when it is asked for.
        std::future<void> other = std::async(std::launch::async | std::launch::deferred,
                                             [&, threads] { split(middle, end, upper, scratch, above, threads / 2); });
        split(begin, middle, lower, scratch, into, threads - threads / 2);
        other.get();
        const auto offset = static_cast<std::uint32_t>(into.size());
        for (Node& node : above)
            node.next += offset;
        into.insert(into.end(), above.begin(), above.end());
    } else {
        split(begin, middle, lower, scratch, into, 1);
        split(middle, end, upper, scratch, into, 1);
    }
    const Node &first = into[own + 1], &second = into[first.next];
    Box both(first.min.x, first.min.y, first.min.z, first.max.x, first.max.y, first.max.z);
    both.addPoint(second.min);
    both.addPoint(second.max);
    into[own] = {both.min, both.max, static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end),
                 static_cast<std::uint32_t>(into.size())};
}

std::size_t CloudPoints::partition(std::size_t begin, std::size_t end, unsigned axis, float border, Scratch& scratch)
{
    const auto along = axis == 0 ? partitionAlong<0> : axis == 1 ? partitionAlong<1> : partitionAlong<2>;
    return begin + along(places.data() + begin, numbers.data() + begin, end - begin, border,
                         scratch.places.data() + begin, scratch.numbers.data() + begin);
}

CloudPoints::Node CloudPoints::group(std::size_t begin, std::size_t end, std::size_t own) const
{
    Box box;
    for (std::size_t i = begin; i < end; ++i)
        box.addPoint(places[i]);
    return {box.min, box.max, static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end),
            static_cast<std::uint32_t>(own + 1)};
}

} // namespace vrk::selection
