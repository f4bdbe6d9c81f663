#include "selection/region/ScreenRegion.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace vrk::selection {
namespace {

using Place = ScreenRegion::Place;
using Rectangle = ScreenRegion::Rectangle;

constexpr std::size_t largestMask = 256; // cells along each side
constexpr std::size_t mostSlabs = 4096;

double cross(const Place& a, const Place& b)
{
    return a.x * b.y - a.y * b.x;
}

/// On which side of the line a-b a place lies: above 0 to the left, as y points up.
double sideOf(const Place& a, const Place& b, const Place& p)
{
    return cross(b - a, p - a);
}

bool isBetween(const Place& a, const Place& b, const Place& p)
{
    return p.x >= std::min(a.x, b.x) && p.x <= std::max(a.x, b.x) && p.y >= std::min(a.y, b.y) &&
           p.y <= std::max(a.y, b.y);
}

/// Whether two segments have a place in common, be it an end or a stretch of a common line.
bool segmentsMeet(const Place& a, const Place& b, const Place& c, const Place& d)
{
    const double ofC = sideOf(a, b, c), ofD = sideOf(a, b, d), ofA = sideOf(c, d, a), ofB = sideOf(c, d, b);
    if (((ofC > 0 && ofD < 0) || (ofC < 0 && ofD > 0)) && ((ofA > 0 && ofB < 0) || (ofA < 0 && ofB > 0)))
        return true;
    return (ofC == 0 && isBetween(a, b, c)) || (ofD == 0 && isBetween(a, b, d)) || (ofA == 0 && isBetween(c, d, a)) ||
           (ofB == 0 && isBetween(c, d, b));
}

bool isInConvex(std::span<const Place> convex, const Place& p)
{
    bool left = false, right = false;
    for (std::size_t i = 0; i < convex.size(); ++i) {
        const double side = sideOf(convex[i], convex[(i + 1) % convex.size()], p);
        left = left || side > 0;
        right = right || side < 0;
    }
    return left != right; // of a flat one, nothing is: its edges are looked at
}

Rectangle boxOf(std::span<const Place> places)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    Rectangle box{infinity, infinity, -infinity, -infinity};
    for (const Place& p : places)
        box = {std::min(box.minX, p.x), std::min(box.minY, p.y), std::max(box.maxX, p.x), std::max(box.maxY, p.y)};
    return box;
}

/// The part of a convex polygon within a rectangle (I. Sutherland, G. Hodgman, "Reentrant Polygon Clipping", CACM 17, 1974).
std::vector<Place> clipped(std::span<const Place> convex, const Rectangle& to)
{
    std::vector<Place> kept(convex.begin(), convex.end()), next;
    const auto cut = [&](const auto& depthOf) {
        next.clear();
        for (std::size_t i = 0; i < kept.size(); ++i) {
            const Place &from = kept[i], &end = kept[(i + 1) % kept.size()];
            const double a = depthOf(from), b = depthOf(end);
            if (a >= 0)
                next.push_back(from);
            if ((a > 0 && b < 0) || (a < 0 && b > 0))
                next.push_back(from + (end - from) * (a / (a - b)));
        }
        kept.swap(next);
    };
    cut([&to](const Place& p) { return p.x - to.minX; });
    cut([&to](const Place& p) { return to.maxX - p.x; });
    cut([&to](const Place& p) { return p.y - to.minY; });
    cut([&to](const Place& p) { return to.maxY - p.y; });
    return kept;
}

bool isUprightRectangle(std::span<const Place> c)
{
    if (c.size() != 4)
        return false;
    const auto sameX = [&c](unsigned i, unsigned k) { return c[i].x == c[k].x; };
    const auto sameY = [&c](unsigned i, unsigned k) { return c[i].y == c[k].y; };
    return (sameX(0, 1) && sameY(1, 2) && sameX(2, 3) && sameY(3, 0)) ||
           (sameY(0, 1) && sameX(1, 2) && sameY(2, 3) && sameX(3, 0));
}

/// As an index below `count`; the ends take what lies beyond them.
std::size_t indexOf(double at, std::size_t count)
{
    if (!(at > 0))
        return 0;
    return at < static_cast<double>(count) ? static_cast<std::size_t>(at) : count - 1;
}

} // namespace

ScreenRegion::ScreenRegion(std::span<const Place> corners, double width, double height)
{
    if (corners.size() < 3)
        throw std::invalid_argument("a region needs at least three corners");
    for (const Place& corner : corners)
        if (!std::isfinite(corner.x) || !std::isfinite(corner.y))
            throw std::invalid_argument("a corner of the region is not finite");
    const Rectangle all = boxOf(corners);
    bounds = {std::max(all.minX, 0.0), std::max(all.minY, 0.0), std::min(all.maxX, width), std::min(all.maxY, height)};
    rectangular = isUprightRectangle(corners);
    if (rectangular || bounds.isEmpty())
        return;
    std::vector<Edge> edges;
    edges.reserve(corners.size());
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Edge edge{corners[i == 0 ? corners.size() - 1 : i - 1], corners[i]};
        // What lies above, below or to the left of all that is asked about is crossed by no line to the right.
        const auto [low, high] = std::minmax(edge.from.y, edge.to.y);
        if (high >= bounds.minY && low <= bounds.maxY && std::max(edge.from.x, edge.to.x) >= bounds.minX)
            edges.push_back(edge);
    }
    makeSlabs(edges);
    makeMask(edges);
}

std::size_t ScreenRegion::slabOf(double y) const
{
    return indexOf((y - bounds.minY) * slabsPerPixel, firstOfSlab.size() - 1);
}

std::size_t ScreenRegion::columnOf(double x) const
{
    return indexOf((x - bounds.minX) * columnsPerPixel, columns);
}

std::size_t ScreenRegion::rowOf(double y) const
{
    return indexOf((y - bounds.minY) * rowsPerPixel, rows);
}

/// As many slabs as there are edges, but no more than leaves each edge in some of them only.
void ScreenRegion::makeSlabs(const std::vector<Edge>& edges)
{
    constexpr std::size_t entriesPerEdge = 32;
    std::size_t count = std::clamp<std::size_t>(4 * edges.size(), 1, mostSlabs);
    const auto divide = [&](std::size_t slabs) {
        firstOfSlab.assign(slabs + 1, 0);
        const double size = bounds.maxY - bounds.minY;
        slabsPerPixel = size > 0 ? static_cast<double>(slabs) / size : 0;
    };
    const auto forSlabs = [&](const Edge& edge, const auto& call) {
        const auto [low, high] = std::minmax(edge.from.y, edge.to.y);
        for (std::size_t slab = slabOf(low), last = slabOf(high); slab <= last; ++slab)
            call(slab);
    };
    for (;; count /= 2) {
        divide(count);
        std::size_t entries = 0;
        for (const Edge& edge : edges)
            entries += slabOf(std::max(edge.from.y, edge.to.y)) - slabOf(std::min(edge.from.y, edge.to.y)) + 1;
        if (count == 1 || entries <= std::max(mostSlabs * entriesPerEdge, entriesPerEdge * edges.size()))
            break;
    }
    for (const Edge& edge : edges)
        forSlabs(edge, [this](std::size_t slab) { ++firstOfSlab[slab + 1]; });
    for (std::size_t slab = 1; slab < firstOfSlab.size(); ++slab)
        firstOfSlab[slab] += firstOfSlab[slab - 1];
    slabEdges.resize(firstOfSlab.back());
    std::vector<std::size_t> next(firstOfSlab.begin(), firstOfSlab.end() - 1);
    for (const Edge& edge : edges)
        forSlabs(edge, [&](std::size_t slab) { slabEdges[next[slab]++] = edge; });
}

void ScreenRegion::makeMask(const std::vector<Edge>& edges)
{
    // Cells are no smaller than a pixel.
    const auto cellsOf = [](double size) {
        return std::clamp<std::size_t>(static_cast<std::size_t>(size), 1, largestMask);
    };
    const double width = bounds.maxX - bounds.minX, height = bounds.maxY - bounds.minY;
    columns = cellsOf(width);
    rows = cellsOf(height);
    columnsPerPixel = width > 0 ? static_cast<double>(columns) / width : 0;
    rowsPerPixel = height > 0 ? static_cast<double>(rows) / height : 0;
    // Without an area each place is asked for by itself.
    cells.assign(columns * rows, width > 0 && height > 0 ? Cell::Outside : Cell::Mixed);
    // More than the rounding of where an edge passes.
    double farthest = 1;
    for (const Edge& edge : edges)
        farthest = std::max(
            {farthest, std::abs(edge.from.x), std::abs(edge.from.y), std::abs(edge.to.x), std::abs(edge.to.y)});
    if (width > 0 && height > 0)
        for (const Edge& edge : edges)
            markEdge(edge, 1e-12 * farthest);
    // A cell without an edge is like the one beside it, if that has none either.
    for (std::size_t row = 0; row < rows; ++row) {
        const double middle = bounds.minY + (static_cast<double>(row) + 0.5) / rowsPerPixel;
        for (std::size_t column = 0; column < columns; ++column) {
            Cell& cell = cells[row * columns + column];
            if (cell == Cell::Mixed)
                continue;
            if (column > 0 && cells[row * columns + column - 1] != Cell::Mixed) {
                cell = cells[row * columns + column - 1];
                continue;
            }
            const double x = bounds.minX + (static_cast<double>(column) + 0.5) / columnsPerPixel;
            cell = crossesOddly({x, middle}) ? Cell::Inside : Cell::Outside;
        }
    }
    notInside.assign((columns + 1) * (rows + 1), 0);
    notOutside = notInside;
    const auto sumUp = [this](std::vector<std::uint32_t>& sums, Cell without) {
        for (std::size_t row = 0; row < rows; ++row) {
            std::uint32_t ofRow = 0;
            for (std::size_t column = 0; column < columns; ++column) {
                ofRow += cells[row * columns + column] != without ? 1 : 0;
                sums[(row + 1) * (columns + 1) + column + 1] = sums[row * (columns + 1) + column + 1] + ofRow;
            }
        }
    };
    sumUp(notInside, Cell::Inside);
    sumUp(notOutside, Cell::Outside);
}

/// Marks the cells that an edge passes, row by row. @param doubt  how far off it may be.
void ScreenRegion::markEdge(const Edge& edge, double doubt)
{
    const Place& low = edge.from.y <= edge.to.y ? edge.from : edge.to;
    const Place& high = edge.from.y <= edge.to.y ? edge.to : edge.from;
    const double dy = high.y - low.y, dx = high.x - low.x;
    const auto [left, right] = std::minmax(low.x, high.x);
    const auto xAt = [&](double y) { return std::clamp(low.x + dx * ((y - low.y) / dy), left, right); };
    const std::size_t last = rowOf(high.y + doubt);
    for (std::size_t row = rowOf(low.y - doubt); row <= last; ++row) {
        const double top = bounds.minY + static_cast<double>(row) / rowsPerPixel - doubt;
        const double bottom = bounds.minY + static_cast<double>(row + 1) / rowsPerPixel + doubt;
        double a = low.x, b = high.x;
        if (dy > doubt) {
            a = xAt(std::clamp(top, low.y, high.y));
            b = xAt(std::clamp(bottom, low.y, high.y));
        }
        const std::size_t end = columnOf(std::max(a, b) + doubt);
        for (std::size_t column = columnOf(std::min(a, b) - doubt); column <= end; ++column)
            cells[row * columns + column] = Cell::Mixed;
    }
}

bool ScreenRegion::crossesOddly(const Place& p) const
{
    bool isInside = false;
    const std::size_t slab = slabOf(p.y);
    for (std::size_t i = firstOfSlab[slab]; i < firstOfSlab[slab + 1]; ++i) {
        const Place &from = slabEdges[i].from, &to = slabEdges[i].to;
        if ((to.y > p.y) != (from.y > p.y) && (from.x - to.x) * (p.y - to.y) / (from.y - to.y) + to.x > p.x)
            isInside = !isInside;
    }
    return isInside;
}

bool ScreenRegion::holds(const Place& p) const
{
    if (!bounds.holds(p))
        return false;
    if (rectangular)
        return true;
    const Cell cell = cells[rowOf(p.y) * columns + columnOf(p.x)];
    return cell == Cell::Mixed ? crossesOddly(p) : cell == Cell::Inside;
}

ScreenRegion::Coverage ScreenRegion::classify(const Rectangle& r) const
{
    if (bounds.isEmpty() ||
        !(r.maxX >= bounds.minX && r.minX <= bounds.maxX && r.maxY >= bounds.minY && r.minY <= bounds.maxY))
        return Coverage::Outside;
    const bool isWithin =
        r.minX >= bounds.minX && r.maxX <= bounds.maxX && r.minY >= bounds.minY && r.maxY <= bounds.maxY;
    if (rectangular)
        return isWithin ? Coverage::Inside : Coverage::Partial;
    const std::size_t left = columnOf(r.minX), right = columnOf(r.maxX) + 1;
    const std::size_t top = rowOf(r.minY) * (columns + 1), bottom = (rowOf(r.maxY) + 1) * (columns + 1);
    const auto countOf = [&](const std::vector<std::uint32_t>& sums) {
        return sums[bottom + right] - sums[bottom + left] - sums[top + right] + sums[top + left];
    };
    if (countOf(notOutside) == 0)
        return Coverage::Outside;
    return isWithin && countOf(notInside) == 0 ? Coverage::Inside : Coverage::Partial;
}

/// Whether an edge of the polygon has a place in common with a convex polygon within `box`.
bool ScreenRegion::isMetByEdge(std::span<const Place> convex, const Rectangle& box) const
{
    for (std::size_t slab = slabOf(box.minY), last = slabOf(box.maxY); slab <= last; ++slab)
        for (std::size_t i = firstOfSlab[slab]; i < firstOfSlab[slab + 1]; ++i) {
            const auto& [from, to] = slabEdges[i];
            if (std::max(from.x, to.x) < box.minX || std::min(from.x, to.x) > box.maxX ||
                std::max(from.y, to.y) < box.minY || std::min(from.y, to.y) > box.maxY)
                continue;
            if (isInConvex(convex, from))
                return true;
            for (std::size_t k = 0; k < convex.size(); ++k)
                if (segmentsMeet(from, to, convex[k], convex[(k + 1) % convex.size()]))
                    return true;
        }
    return false;
}

bool ScreenRegion::touches(std::span<const Place> convex) const
{
    const Coverage coverage = classify(boxOf(convex));
    if (coverage != Coverage::Partial)
        return coverage == Coverage::Inside;
    const std::vector<Place> part = clipped(convex, bounds);
    if (part.empty())
        return false;
    // Where no edge passes through it, it lies wholly on one side. A place that was cut may lie outside by its rounding.
    const Place first{std::clamp(part.front().x, bounds.minX, bounds.maxX),
                      std::clamp(part.front().y, bounds.minY, bounds.maxY)};
    return rectangular || holds(first) || isMetByEdge(part, boxOf(part));
}

bool ScreenRegion::holdsAll(std::span<const Place> convex) const
{
    const Rectangle box = boxOf(convex);
    const Coverage coverage = classify(box);
    if (coverage != Coverage::Partial)
        return coverage == Coverage::Inside;
    if (rectangular)
        return false;
    for (const Place& p : convex)
        if (!holds(p))
            return false;
    return !isMetByEdge(convex, box);
}

} // namespace vrk::selection
