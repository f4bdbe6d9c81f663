#include "selection/region/SeenMap.h"

#include "platform/common/ParallelFor.h"
#include "selection/SelectableObject.h"
#include "selection/SensitiveFace.h"
#include "selection/SensitiveMesh.h"
#include "selection/region/RegionWork.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <thread>

namespace vrk::selection {
namespace {

constexpr double everyFourth = 4;
constexpr double smallRegion = 64; // pixels; up to there each one is looked at
constexpr std::size_t trianglesAtOnce = 64;
constexpr std::size_t trianglesOfItem = 4096;

const SensitiveTriangleSet& trianglesOf(const SelectableObject& body, std::size_t part)
{
    const BVHPrimitive* primitive = body.primitives[part];
    if (body.kind == SelectableObject::ObjectKind::Shape)
        return *static_cast<const SensitiveFace*>(primitive);
    return *static_cast<const SensitiveMesh*>(primitive);
}

ObjectInView inView(const RegionView& view, const SelectableObject& object)
{
    return {view, rob::Posed(object.worldPose), rob::Vec3Template<double>(object.worldScale)};
}

} // namespace

/// Draws triangles into a grid.
class SeenMap::Painter {
public:
    Painter(const SeenMap& map, Grid& grid) : map(map), grid(grid) {}

    void draw(const ObjectInView& view, const rob::TriangleTemplate<float>& triangle, std::uint32_t part)
    {
        std::array<Corner, 4> corners;
        unsigned behind = 0;
        for (unsigned i = 0; i < 3; ++i) {
            const rob::Posd p(i == 0 ? triangle.a : i == 1 ? triangle.b : triangle.c);
            corners[i] = {view.x.at(p), view.y.at(p), view.w.at(p), view.depth.at(p), view.nearPlane.at(p)};
            behind += corners[i].beforePlane < 0 || !(corners[i].w > 0) ? 1 : 0;
        }
        if (behind == 3)
            return;
        if (behind == 0)
            return fill({shown(corners[0]), shown(corners[1]), shown(corners[2])}, part);
        const unsigned count = cut(corners);
        for (unsigned i = 2; i < count; ++i)
            fill({shown(corners[0]), shown(corners[i - 1]), shown(corners[i])}, part);
    }

private:
    struct Corner {
        double x, y, w, depth, beforePlane;
    };
    /// In samples, with what goes evenly across the view.
    struct Shown {
        double x, y, perW, depthPerW;
    };

    /// To what lies behind the near plane. Returns how many corners are left.
    static unsigned cut(std::array<Corner, 4>& corners)
    {
        const std::array<Corner, 3> all{corners[0], corners[1], corners[2]};
        unsigned count = 0;
        for (unsigned i = 0; i < 3; ++i) {
            const Corner &from = all[i], &end = all[(i + 1) % 3];
            const double a = from.beforePlane, b = end.beforePlane;
            if (a >= 0 && from.w > 0)
                corners[count++] = from;
            if ((a > 0 && b < 0) || (a < 0 && b > 0)) {
                const double t = a / (a - b);
                const auto between = [t](double u, double v) { return u + (v - u) * t; };
                const Corner met{between(from.x, end.x), between(from.y, end.y), between(from.w, end.w),
                                 between(from.depth, end.depth), 0};
                if (met.w > 0)
                    corners[count++] = met;
            }
        }
        return count;
    }

    Shown shown(const Corner& c) const
    {
        const double perW = 1 / c.w;
        return {(c.x * perW - map.left) / map.step, (c.y * perW - map.top) / map.step, perW, c.depth * perW};
    }

    void fill(const std::array<Shown, 3>& t, std::uint32_t part)
    {
        const double minX = std::ceil(std::max(std::min({t[0].x, t[1].x, t[2].x}), 0.0));
        const double minY = std::ceil(std::max(std::min({t[0].y, t[1].y, t[2].y}), 0.0));
        const double maxX = std::min(std::max({t[0].x, t[1].x, t[2].x}), static_cast<double>(map.columns - 1));
        const double maxY = std::min(std::max({t[0].y, t[1].y, t[2].y}), static_cast<double>(map.rows - 1));
        if (!(minX <= maxX && minY <= maxY)) // between samples, or no number at all
            return;
        const double area = (t[1].x - t[0].x) * (t[2].y - t[0].y) - (t[1].y - t[0].y) * (t[2].x - t[0].x);
        if (area == 0)
            return;
        // Of each edge the share of the corner across it: from 0 on inside, at (minX, minY), and how it goes on from there.
        std::array<double, 3> share, alongX, alongY;
        for (unsigned i = 0; i < 3; ++i) {
            const Shown &a = t[(i + 1) % 3], &b = t[(i + 2) % 3];
            alongX[i] = (a.y - b.y) / area;
            alongY[i] = (b.x - a.x) / area;
            share[i] = (minX - a.x) * alongX[i] + (minY - a.y) * alongY[i];
        }
        const auto evenly = [&t](const std::array<double, 3>& s, double Shown::*of) {
            return s[0] * (t[0].*of) + s[1] * (t[1].*of) + s[2] * (t[2].*of);
        };
        const double perW = evenly(share, &Shown::perW), perWX = evenly(alongX, &Shown::perW),
                     perWY = evenly(alongY, &Shown::perW);
        const double depth = evenly(share, &Shown::depthPerW), depthX = evenly(alongX, &Shown::depthPerW),
                     depthY = evenly(alongY, &Shown::depthPerW);
        // So that neighbours leave no crack to the rounding of where their common edge passes.
        std::array<double, 3> least;
        for (unsigned i = 0; i < 3; ++i)
            least[i] = -1e-9 * (std::abs(alongX[i]) + std::abs(alongY[i]));
        const auto firstColumn = static_cast<std::size_t>(minX), lastColumn = static_cast<std::size_t>(maxX);
        const auto firstRow = static_cast<std::size_t>(minY), lastRow = static_cast<std::size_t>(maxY);
        for (std::size_t row = firstRow; row <= lastRow; ++row) {
            const auto dy = static_cast<double>(row - firstRow);
            // The columns between the edges
            double from = 0, to = static_cast<double>(lastColumn - firstColumn);
            for (unsigned i = 0; i < 3; ++i) {
                const double at = share[i] + dy * alongY[i] - least[i];
                if (alongX[i] > 0)
                    from = std::max(from, -at / alongX[i]);
                else if (alongX[i] < 0)
                    to = std::min(to, at / -alongX[i]);
                else if (at < 0)
                    to = -1;
            }
            if (!(from <= to))
                continue;
            Sample* const samples = &grid[row * map.columns + firstColumn];
            const auto end = static_cast<std::size_t>(to);
            for (auto column = static_cast<std::size_t>(std::ceil(from)); column <= end; ++column) {
                const auto dx = static_cast<double>(column);
                const double d = (depth + dx * depthX + dy * depthY) / (perW + dx * perWX + dy * perWY);
                Sample& sample = samples[column];
                if (d < sample.depth || (d == sample.depth && part < sample.part))
                    sample = {d, part};
            }
        }
    }

    const SeenMap& map;
    Grid& grid;
};

SeenMap::SeenMap(const RegionQuery& query, const RegionView& view, const ScreenRegion& region,
                 const std::vector<const SelectableObject*>& bodies, RegionWork& work)
{
    const ScreenRegion::Rectangle& bounds = region.getBounds();
    const double width = bounds.maxX - bounds.minX, height = bounds.maxY - bounds.minY;
    const bool isSmall = width <= smallRegion && height <= smallRegion;
    step = query.sight == RegionQuery::Sight::Seen && !isSmall ? everyFourth : 1;
    // A region of less than a pixel is looked at through its own middle.
    left = width < 1 ? (bounds.minX + bounds.maxX) / 2 : std::floor(bounds.minX) + 0.5;
    top = height < 1 ? (bounds.minY + bounds.maxY) / 2 : std::floor(bounds.minY) + 0.5;
    columns = static_cast<std::size_t>(std::max(0.0, std::floor((bounds.maxX - left) / step))) + 1;
    rows = static_cast<std::size_t>(std::max(0.0, std::floor((bounds.maxY - top) / step))) + 1;
    slackPerStep = 2 * step / (std::abs(view.projection[0]) * view.width / 2);
    const std::vector<Item> items = itemsOf(bodies);
    paint(view, items, work);
    markSeen(query, region);
}

std::vector<SeenMap::Item> SeenMap::itemsOf(const std::vector<const SelectableObject*>& bodies)
{
    std::vector<Item> items;
    std::uint32_t parts = 0;
    for (const SelectableObject* body : bodies) {
        firstPart.emplace(body, parts);
        for (std::size_t i = 0; i < body->primitives.size(); ++i, ++parts) {
            const SensitiveTriangleSet& set = trianglesOf(*body, i);
            for (std::size_t begin = 0; begin < set.primitives.size(); begin += trianglesOfItem)
                items.push_back({body, &set, parts, begin, std::min(begin + trianglesOfItem, set.primitives.size())});
        }
    }
    seenParts.assign(parts, 0);
    return items;
}

/// Each thread fills a grid of its own; the nearest of all is kept, and of equally near ones the part that comes first, so
/// that the answer does not depend on how many there are.
void SeenMap::paint(const RegionView& view, const std::vector<Item>& items, RegionWork& work)
{
    constexpr std::size_t mostThreads = 8; // each needs a grid
    constexpr std::size_t itemsAtOnce = 16;
    const Sample empty{std::numeric_limits<double>::infinity(), nothing};
    const std::size_t threads = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, mostThreads);
    std::vector<Grid> grids(std::min(threads, items.size() / itemsAtOnce + 1));
    work.expect(items.size());
    // What is near the grid's samples
    const double right = left + step * static_cast<double>(columns), bottom = top + step * static_cast<double>(rows);
    const std::array<ScreenRegion::Place, 4> around{
        ScreenRegion::Place{left - step, top - step}, {right, top - step}, {right, bottom}, {left - step, bottom}};
    const ScreenRegion near(around, view.width, view.height);
    std::atomic<std::size_t> next = 0;
    parallelFor(grids.size(), [&](std::size_t first, std::size_t last) {
        for (std::size_t k = first; k < last; ++k) {
            grids[k].assign(columns * rows, empty);
            Painter painter(*this, grids[k]);
            rob::TriangleTemplate<float> triangles[trianglesAtOnce];
            for (std::size_t at = next.fetch_add(itemsAtOnce); at < items.size(); at = next.fetch_add(itemsAtOnce)) {
                const std::size_t end = std::min(at + itemsAtOnce, items.size());
                work.advance(end - at);
                for (std::size_t i = at; i < end; ++i) {
                    const Item& item = items[i];
                    const ObjectInView body = inView(view, *item.body);
                    const ObjectInView part =
                        item.triangles->hasPose ? body.ofPart(rob::Posed(item.triangles->pose)) : body;
                    const Box& box = item.triangles->getBounds();
                    if (RegionTest({}, near, part).classify(box.min, box.max) == RegionTest::Coverage::Outside)
                        continue;
                    for (std::size_t t = item.begin; t < item.end; t += trianglesAtOnce) {
                        const auto count = static_cast<unsigned>(std::min(trianglesAtOnce, item.end - t));
                        item.triangles->readTriangles(t, count, triangles);
                        for (unsigned n = 0; n < count; ++n)
                            painter.draw(part, triangles[n], item.part);
                    }
                }
            }
        }
    });
    grid = std::move(grids.front());
    parallelFor(rows, [&](std::size_t begin, std::size_t end) {
        for (std::size_t k = 1; k < grids.size(); ++k)
            for (std::size_t i = begin * columns; i < end * columns; ++i)
                if (const Sample& s = grids[k][i];
                    s.depth < grid[i].depth || (s.depth == grid[i].depth && s.part < grid[i].part))
                    grid[i] = s;
    });
}

void SeenMap::markSeen(const RegionQuery& query, const ScreenRegion& region)
{
    for (std::size_t row = 0; row < rows; ++row)
        for (std::size_t column = 0; column < columns; ++column) {
            const Sample& sample = grid[row * columns + column];
            if (sample.part == nothing || seenParts[sample.part] != 0 || sample.depth < query.nearest ||
                sample.depth > query.farthest)
                continue;
            if (region.holds({left + step * static_cast<double>(column), top + step * static_cast<double>(row)}))
                seenParts[sample.part] = 1;
        }
}

bool SeenMap::isSeen(const SelectableObject& body) const
{
    for (std::size_t i = 0; i < body.primitives.size(); ++i)
        if (isSeen(body, i))
            return true;
    return false;
}

bool SeenMap::isSeen(const SelectableObject& body, std::size_t face) const
{
    return seenParts[firstPart.at(&body) + face] != 0;
}

bool SeenMap::isHidden(const ScreenRegion::Place& pixel, double w, double depth) const
{
    const double before = depth - slackPerStep * w;
    const double x = (pixel.x - left) / step, y = (pixel.y - top) / step;
    return sampleAt(x, y).depth < before && sampleAt(x + 1, y).depth < before && sampleAt(x, y + 1).depth < before &&
           sampleAt(x + 1, y + 1).depth < before;
}

bool SeenMap::isHiddenAtNearest(const ScreenRegion::Place& pixel, double w, double depth) const
{
    return sampleAt((pixel.x - left) / step + 0.5, (pixel.y - top) / step + 0.5).depth < depth - slackPerStep * w;
}

/// The sample at or before a place, in samples; the outermost ones stand for what lies beyond.
const SeenMap::Sample& SeenMap::sampleAt(double x, double y) const
{
    const auto indexOf = [](double at, std::size_t count) {
        return at > 0 ? std::min(static_cast<std::size_t>(at), count - 1) : std::size_t{0};
    };
    return grid[indexOf(y, rows) * columns + indexOf(x, columns)];
}

} // namespace vrk::selection
