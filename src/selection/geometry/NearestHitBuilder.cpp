#include "selection/geometry/NearestHitBuilder.h"

#include "platform/common/ParallelFor.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <stdexcept>

namespace vrk::selection {
namespace {

constexpr unsigned mostBins = 16;
constexpr unsigned leastForThreads = 1u << 15; // below it a thread costs more than it gains
constexpr unsigned deepest = 48;               // from there on ranges are halved, so that no input makes a long chain

/// Memory for the references, which are all written before they are read.
struct Scratch {
    explicit Scratch(std::size_t count) : first(Pages().allocate(count)), count(count) {}
    ~Scratch() { Pages().deallocate(first, count); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    using Pages = LargePages<NearestHitTree::Reference>;

    NearestHitTree::Reference* first;
    std::size_t count;
};

/// On all cores where there is enough to do.
void forAll(std::size_t count, const std::function<void(std::size_t, std::size_t)>& work)
{
    if (count < leastForThreads)
        work(0, count);
    else
        parallelFor(count, work);
}

/// The leaves that so many triangles fill.
float leavesOf(unsigned count)
{
    return static_cast<float>((count + NearestHitTree::leafCapacity - 1) / NearestHitTree::leafCapacity);
}

} // namespace

/// Which bin a centre lies in, on each axis. An axis along which the centres lie together has one.
struct NearestHitBuilder::Bins {
    explicit Bins(const Range& range) : start(range.centers.lower)
    {
        // Few bins for few triangles: going over them must not cost more than going over these.
        count = std::min(mostBins, 4 + range.count() / 16);
        const Float4 size = range.centers.upper - range.centers.lower;
        for (unsigned axis = 0; axis < 3;
             ++axis) // just less than the number of bins, which the last centre must not reach
            scale[axis] = size[axis] > 1e-30f ? 0.999f * static_cast<float>(count) / size[axis] : 0.0f;
    }
    Int4 of(const Reference& reference) const
    {
        return __builtin_convertvector((reference.lower + reference.upper - start) * scale, Int4);
    }
    int of(const Reference& reference, unsigned axis) const
    {
        return static_cast<int>((reference.lower[axis] + reference.upper[axis] - start[axis]) * scale[axis]);
    }

    Float4 start;
    Float4 scale{};
    unsigned count;
};

/// What lies in each bin of each axis. Sums of parts do not depend on their order.
struct NearestHitBuilder::Sums {
    explicit Sums(unsigned bins) : bins(bins)
    {
        for (unsigned i = 0; i < bins; ++i)
            for (unsigned axis = 0; axis < 3; ++axis) {
                boxes[i][axis] = Bounds::Empty();
                counts[i][axis] = 0;
            }
    }
    void add(const Bins& of, const Reference* begin, const Reference* end)
    {
        for (; begin != end; ++begin) {
            const Int4 bin = of.of(*begin);
            for (unsigned axis = 0; axis < 3; ++axis) {
                boxes[bin[axis]][axis].add(begin->lower, begin->upper);
                ++counts[bin[axis]][axis];
            }
        }
    }
    void add(const Sums& o)
    {
        for (unsigned i = 0; i < bins; ++i)
            for (unsigned axis = 0; axis < 3; ++axis) {
                boxes[i][axis].add(o.boxes[i][axis]);
                counts[i][axis] += o.counts[i][axis];
            }
    }

    unsigned bins;
    Bounds boxes[mostBins][3];
    unsigned counts[mostBins][3];
};

struct NearestHitBuilder::Plane {
    Bins bins;
    unsigned axis = 0;
    unsigned after = 0; // the last bin below it
    float cost = std::numeric_limits<float>::infinity();
};

void NearestHitBuilder::build(std::size_t count,
                              const std::function<void(std::size_t begin, std::size_t end, Reference* out)>& fill)
{
    if (count >= NearestHitTree::firstMask)
        throw std::length_error("too many triangles in one set");
    if (count == 0)
        return;
    const Scratch scratch(count);
    references = scratch.first;
    total = static_cast<unsigned>(count);
    const Range range = takeIn(fill);
    if (total == 0)
        return;

    for (unsigned axis = 0; axis < 3; ++axis)
        tree.farthestCoordinate =
            std::max({tree.farthestCoordinate, std::abs(range.box.lower[axis]), std::abs(range.box.upper[axis])});
    if (!(tree.farthestCoordinate < NearestHitTree::largeCoordinate)) // the areas of its boxes would be no numbers
        return;
    if (total < leastForThreads) {
        tree.nodes.reserve(total / 3 + 1);
        tree.top = add(range, 0, tree.nodes, 0, nullptr);
    } else {
        std::vector<Later> later;
        tree.top = add(range, 0, tree.nodes, std::max(total / 16, leastForThreads / 4), &later);
        buildRest(later);
    }
    tree.nodes.shrink_to_fit();
    tree.numbers.resize(total);
    forAll(total, [this](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i)
            tree.numbers[i] = references[i].getNumber();
    });
}

NearestHitBuilder::Range
NearestHitBuilder::takeIn(const std::function<void(std::size_t begin, std::size_t end, Reference* out)>& fill)
{
    Range all;
    bool anyLeftOut = false;
    std::mutex merging;
    forAll(total, [&](std::size_t begin, std::size_t end) {
        fill(begin, end, references + begin);
        Range mine;
        bool anyOfMine = false;
        for (std::size_t i = begin; i < end; ++i) {
            if (references[i].isLeftOut())
                anyOfMine = true;
            else
                mine.add(references[i]);
        }
        const std::lock_guard lock(merging);
        all.box.add(mine.box);
        all.centers.add(mine.centers);
        anyLeftOut = anyLeftOut || anyOfMine;
    });
    if (anyLeftOut) {
        const auto isLeftOut = [](const Reference& reference) { return reference.isLeftOut(); };
        total = static_cast<unsigned>(std::remove_if(references, references + total, isLeftOut) - references);
    }
    all.end = total;
    return all;
}

NearestHitTree::Child NearestHitBuilder::add(const Range& range, unsigned depth, Nodes& into, unsigned grain,
                                             std::vector<Later>* later)
{
    if (range.count() <= NearestHitTree::leafCapacity)
        return NearestHitTree::leafBit | (range.count() - 1) << NearestHitTree::countShift | range.begin;

    std::array<Range, NearestHitTree::width> parts{range};
    unsigned count = 1;
    while (count < parts.size()) {
        unsigned largest = count;
        float area = -1;
        for (unsigned i = 0; i < count; ++i) {
            const float mine = parts[i].box.halfArea();
            if (parts[i].count() > NearestHitTree::leafCapacity && mine > area) {
                largest = i;
                area = mine;
            }
        }
        if (largest == count)
            break;
        parts[count++] = split(parts[largest], depth);
    }

    const auto index = static_cast<Child>(into.size());
    into.push_back(nodeOver(parts, count));
    for (unsigned i = 0; i < count; ++i) {
        if (later != nullptr && parts[i].count() <= grain) {
            later->push_back({parts[i], depth + 1, index, i, {}, NearestHitTree::nothing});
            continue;
        }
        const Child child = add(parts[i], depth + 1, into, grain, later);
        into[index].children[i] = child;
    }
    return index;
}

/// Each thread makes whole subtrees; they are put behind each other in their order afterwards.
void NearestHitBuilder::buildRest(std::vector<Later>& later)
{
    parallelFor(later.size(), [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            later[i].nodes.reserve(later[i].range.count() / 8);
            later[i].top = add(later[i].range, later[i].depth, later[i].nodes, 0, nullptr);
        }
    });
    std::size_t all = tree.nodes.size();
    for (const Later& subtree : later)
        all += subtree.nodes.size();
    tree.nodes.reserve(all);
    const auto movedBy = [](Child child, Child offset) {
        return (child & NearestHitTree::leafBit) != 0 ? child : child + offset;
    };
    for (Later& subtree : later) {
        const auto offset = static_cast<Child>(tree.nodes.size());
        tree.nodes[subtree.parent].children[subtree.place] = movedBy(subtree.top, offset);
        for (Node& node : subtree.nodes) {
            for (Child& child : node.children) // what is nothing has the bit of a leaf
                child = movedBy(child, offset);
            tree.nodes.push_back(node);
        }
        Nodes().swap(subtree.nodes);
    }
}

NearestHitBuilder::Range NearestHitBuilder::split(Range& range, unsigned depth)
{
    if (depth >= deepest)
        return halve(range);
    const Plane plane = cheapestPlane(range);
    return plane.cost < std::numeric_limits<float>::infinity() ? partition(range, plane) : halve(range);
}

NearestHitBuilder::Plane NearestHitBuilder::cheapestPlane(const Range& range) const
{
    Plane best{Bins(range)};
    const unsigned count = best.bins.count;
    Sums sums(count);
    if (range.count() < 4 * leastForThreads) {
        sums.add(best.bins, references + range.begin, references + range.end);
    } else {
        std::mutex merging;
        parallelFor(range.count(), [&](std::size_t begin, std::size_t end) {
            Sums mine(count);
            mine.add(best.bins, references + range.begin + begin, references + range.begin + end);
            const std::lock_guard lock(merging);
            sums.add(mine);
        });
    }
    for (unsigned axis = 0; axis < 3; ++axis) {
        if (best.bins.scale[axis] == 0)
            continue;
        float upperCost[mostBins]; // of what lies in the bins i and above; without anything there, no plane is below i
        Bounds box = Bounds::Empty();
        unsigned above = 0;
        for (unsigned i = count - 1; i > 0; --i) {
            box.add(sums.boxes[i][axis]);
            above += sums.counts[i][axis];
            upperCost[i] = above > 0 ? box.halfArea() * leavesOf(above) : std::numeric_limits<float>::infinity();
        }
        box = Bounds::Empty();
        unsigned below = 0;
        for (unsigned i = 0; i + 1 < count; ++i) {
            box.add(sums.boxes[i][axis]);
            below += sums.counts[i][axis];
            if (below == 0)
                continue;
            const float cost = box.halfArea() * leavesOf(below) + upperCost[i + 1];
            if (cost < best.cost) {
                best.axis = axis;
                best.after = i;
                best.cost = cost;
            }
        }
    }
    return best;
}

NearestHitBuilder::Range NearestHitBuilder::partition(Range& range, const Plane& plane)
{
    const auto isBelow = [this, &plane](unsigned i) {
        return plane.bins.of(references[i], plane.axis) <= static_cast<int>(plane.after);
    };
    Range lower, upper;
    unsigned i = range.begin, j = range.end;
    for (;;) {
        while (i < j && isBelow(i))
            lower.add(references[i++]);
        while (i < j && !isBelow(j - 1))
            upper.add(references[--j]);
        if (i >= j)
            break;
        std::swap(references[i], references[j - 1]);
        lower.add(references[i++]);
        upper.add(references[--j]);
    }
    lower.begin = range.begin;
    lower.end = upper.begin = i;
    upper.end = range.end;
    range = lower;
    return upper;
}

NearestHitBuilder::Range NearestHitBuilder::halve(Range& range)
{
    const unsigned middle = range.begin + range.count() / 2;
    const auto rangeOver = [this](unsigned begin, unsigned end) {
        Range made;
        made.begin = begin;
        made.end = end;
        for (unsigned i = begin; i < end; ++i)
            made.add(references[i]);
        return made;
    };
    const Range upper = rangeOver(middle, range.end);
    range = rangeOver(range.begin, middle);
    return upper;
}

NearestHitTree::Node NearestHitBuilder::nodeOver(const std::array<Range, NearestHitTree::width>& parts, unsigned count)
{
    constexpr float steps = 255;
    // Each plane is put so much of a step farther out that what the walk loses with its products does not matter.
    constexpr float outwards = 1.0f / 512;

    Bounds all = Bounds::Empty();
    for (unsigned i = 0; i < count; ++i)
        all.add(parts[i].box);
    Node node{};
    for (unsigned axis = 0; axis < 3; ++axis) {
        const float step = std::max((all.upper[axis] - all.lower[axis]) / (steps - 1), 1e-30f);
        node.corner[axis] = all.lower[axis];
        node.step[axis] = step;
        for (unsigned i = 0; i < count; ++i) {
            const float low = (parts[i].box.lower[axis] - all.lower[axis]) / step - outwards;
            const float high = (parts[i].box.upper[axis] - all.lower[axis]) / step + outwards;
            // Numbers that are not negative lose nothing but their fraction.
            node.planes[axis][i] = static_cast<std::uint8_t>(std::max(low, 0.0f));
            node.planes[axis + 3][i] = static_cast<std::uint8_t>(std::min(high + 1, steps));
        }
    }
    std::fill(std::begin(node.children), std::end(node.children), NearestHitTree::nothing);
    return node;
}

} // namespace vrk::selection
