#include "selection/region/RegionPoints.h"

#include "platform/common/ParallelFor.h"
#include "selection/CloudPoints.h"
#include "selection/region/RegionWork.h"
#include "selection/region/SeenMap.h"

#include <algorithm>
#include <array>
#include <bit>
#include <mutex>

namespace vrk::selection {
namespace {

constexpr std::uint32_t pointsAtOnce = 4096;
constexpr std::uint32_t pointsOfStep = 4096; // what counts as a step of work
constexpr std::size_t worthThreads = 20000;  // points; fewer are done sooner on one

/// On all cores, or on this one where that is done sooner.
template <typename Work>
void shareOut(std::size_t points, std::size_t count, const Work& work)
{
    if (points >= worthThreads)
        parallelFor(count, work);
    else if (count > 0)
        work(0, count);
}

} // namespace

std::uint64_t RegionPoints::StepsOf(const CloudPoints& cloud)
{
    return cloud.getNumbers().size() / pointsOfStep + 1;
}

RegionPoints::RegionPoints(const CloudPoints& cloud, const layout::PointSet* hidden, const RegionTest& test,
                           const SeenMap* seen, RegionWork& work)
    : cloud(cloud), hidden(hidden), test(test), seen(seen)
{
    const std::vector<Stretch> stretches = stretchesInside();
    std::size_t points = 0;
    for (const Stretch& stretch : stretches)
        points += stretch.end - stretch.begin;
    const std::size_t words = cloud.getCloudSize() / 64 + 1;
    // A set of its own for each thread: to share one they would have to take turns at each word.
    std::vector<Bits> free, used;
    std::mutex borrowing;
    const auto borrow = [&] {
        const std::lock_guard lock(borrowing);
        if (free.empty())
            return Bits(words);
        Bits bits = std::move(free.back());
        free.pop_back();
        return bits;
    };
    shareOut(points, stretches.size(), [&](std::size_t begin, std::size_t end) {
        Bits bits = borrow();
        std::uint64_t pending = 0; // points
        for (std::size_t i = begin; i < end; ++i) {
            mark(stretches[i], bits);
            pending += stretches[i].end - stretches[i].begin;
            if (pending >= 16 * pointsOfStep) {
                work.advance(pending / pointsOfStep);
                pending %= pointsOfStep;
            }
        }
        const std::lock_guard lock(borrowing);
        free.push_back(std::move(bits));
    });
    if (free.empty())
        return;
    Bits& all = free.front();
    shareOut(points, words, [&](std::size_t begin, std::size_t end) {
        for (std::size_t k = 1; k < free.size(); ++k)
            for (std::size_t i = begin; i < end; ++i)
                all[i] |= free[k][i];
        if (hidden)
            for (std::size_t i = begin; i < end; ++i)
                all[i] &= ~hidden->word(i);
    });
    listMarked(all);
    whole = !numbers.empty() && areAllThatAreDrawn();
}

bool RegionPoints::areAllThatAreDrawn() const
{
    const std::span<const unsigned> ofCloud = cloud.getNumbers();
    if (!hidden)
        return numbers.size() == ofCloud.size();
    // The set may name points that are not finite, which are no points of this cloud.
    return numbers.size() + hidden->size() >= ofCloud.size() &&
           numbers.size() == static_cast<std::size_t>(std::ranges::count_if(
                                 ofCloud, [this](unsigned number) { return !hidden->contains(number); }));
}

/// What is not outside, in the order of the points: large stretches that lie wholly inside are cut into pieces of equal work.
std::vector<RegionPoints::Stretch> RegionPoints::stretchesInside() const
{
    std::vector<Stretch> stretches;
    const auto nodes = cloud.getNodes();
    for (std::size_t i = 0; i < nodes.size();) {
        const CloudPoints::Node& node = nodes[i];
        const RegionTest::Coverage coverage = test.classify(node.min, node.max);
        if (coverage == RegionTest::Coverage::Partial && !node.isGroup(i)) {
            ++i;
            continue;
        }
        if (coverage != RegionTest::Coverage::Outside)
            for (std::uint32_t at = node.begin; at < node.end; at += pointsAtOnce)
                stretches.push_back(
                    {at, std::min(at + pointsAtOnce, node.end), coverage == RegionTest::Coverage::Inside});
        i = node.next;
    }
    return stretches;
}

void RegionPoints::mark(const Stretch& stretch, Bits& bits) const
{
    const std::size_t count = stretch.end - stretch.begin;
    const auto ofCloud = cloud.getNumbers().subspan(stretch.begin, count);
    const auto set = [&bits](unsigned number) { bits[number / 64] |= std::uint64_t{1} << (number % 64); };
    if (stretch.isWhole && !seen) {
        for (const unsigned number : ofCloud)
            set(number);
        return;
    }
    if (seen) {
        for (std::uint32_t at = stretch.begin; at < stretch.end; ++at)
            if ((stretch.isWhole || test.holds(rob::Posd(cloud.getPlaces()[at]))) && !isHidden(at))
                set(cloud.getNumbers()[at]);
        return;
    }
    std::array<unsigned, pointsAtOnce> inside;
    const std::size_t found = test.select(cloud.getPlaces().subspan(stretch.begin, count), ofCloud, inside.data());
    for (std::size_t i = 0; i < found; ++i)
        set(inside[i]);
}

bool RegionPoints::isHidden(std::uint32_t at) const
{
    const rob::Posd place(cloud.getPlaces()[at]);
    const ObjectInView& view = test.getView();
    const double w = view.w.at(place);
    return seen->isHidden({view.x.at(place) / w, view.y.at(place) / w}, w, view.depth.at(place));
}

void RegionPoints::listMarked(const Bits& bits)
{
    constexpr std::size_t wordsAtOnce = 4096;
    const std::size_t blocks = (bits.size() + wordsAtOnce - 1) / wordsAtOnce;
    const auto forWords = [&bits](std::size_t block, const auto& call) {
        const std::size_t end = std::min((block + 1) * wordsAtOnce, bits.size());
        for (std::size_t i = block * wordsAtOnce; i < end; ++i)
            call(i, bits[i]);
    };
    std::vector<std::size_t> firstOf(blocks + 1);
    for (std::size_t block = 0; block < blocks; ++block) {
        std::size_t count = 0;
        forWords(block,
                 [&count](std::size_t, std::uint64_t word) { count += static_cast<unsigned>(std::popcount(word)); });
        firstOf[block + 1] = firstOf[block] + count;
    }
    numbers.resize(firstOf.back());
    shareOut(numbers.size(), blocks, [&](std::size_t begin, std::size_t end) {
        for (std::size_t block = begin; block < end; ++block) {
            std::uint32_t* out = numbers.data() + firstOf[block];
            forWords(block, [&out](std::size_t i, std::uint64_t word) {
                for (; word != 0; word &= word - 1)
                    *out++ = static_cast<std::uint32_t>(i * 64 + static_cast<unsigned>(std::countr_zero(word)));
            });
        }
    });
}

} // namespace vrk::selection
