#include "CamSurfaces.h"

#include "platform/cam/SurfaceTree.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <random>

namespace vrk::test {

using cam::TriangleSurface;
using rob::Posd;
using rob::Vec3d;

namespace {

/// A grid of cells x cells squares; `place` is asked with both parts from 0 to 1.
template <typename Place>
void addGrid(TriangleSurface& surface, unsigned cells, const Place& place)
{
    const auto first = static_cast<std::uint32_t>(surface.vertices.size());
    for (unsigned i = 0; i <= cells; ++i)
        for (unsigned k = 0; k <= cells; ++k)
            surface.vertices.push_back(place(double(i) / cells, double(k) / cells));
    for (unsigned i = 0; i < cells; ++i)
        for (unsigned k = 0; k < cells; ++k) {
            const std::uint32_t a = first + i * (cells + 1) + k, b = a + cells + 1;
            surface.triangles.push_back({a, b, b + 1});
            surface.triangles.push_back({a, b + 1, a + 1});
        }
}

template <typename Visit>
void forTriangles(const TriangleSurface& surface, const Visit& visit)
{
    for (const auto& t : surface.triangles)
        visit(surface.vertices[t[0]], surface.vertices[t[1]], surface.vertices[t[2]]);
}

using Edges = std::map<std::pair<std::uint32_t, std::uint32_t>, std::pair<unsigned, unsigned>>; // rising, falling

Edges edgeTable(const TriangleSurface& surface)
{
    Edges edges;
    for (const auto& t : surface.triangles)
        for (unsigned i = 0; i < 3; ++i) {
            const std::uint32_t a = t[i], b = t[(i + 1) % 3];
            auto& [rising, falling] = edges[{std::min(a, b), std::max(a, b)}];
            ++(a < b ? rising : falling);
        }
    return edges;
}

} // namespace

TriangleSurface waveTorus(unsigned along, unsigned around)
{
    TriangleSurface surface;
    constexpr double turn = 2 * std::numbers::pi;
    for (unsigned i = 0; i < along; ++i)
        for (unsigned k = 0; k < around; ++k) {
            const double a = turn * i / along, b = turn * k / around;
            const double r = 4 + 0.4 * std::sin(5 * a + 3 * b) + 0.25 * std::sin(11 * a - 7 * b);
            const double q = 10 + r * std::cos(b);
            surface.vertices.emplace_back(q * std::cos(a), q * std::sin(a), r * std::sin(b) + 0.8 * std::sin(3 * a));
        }
    for (unsigned i = 0; i < along; ++i)
        for (unsigned k = 0; k < around; ++k) {
            const std::uint32_t a = i * around + k, b = (i + 1) % along * around + k;
            const std::uint32_t c = (i + 1) % along * around + (k + 1) % around, d = i * around + (k + 1) % around;
            surface.triangles.push_back({a, b, c});
            surface.triangles.push_back({a, c, d});
        }
    return surface;
}

TriangleSurface boxOf(unsigned cells)
{
    TriangleSurface sides;
    const Vec3d size(40, 20, 10);
    for (unsigned axis = 0; axis < 3; ++axis)
        for (const bool isUpper : {false, true})
            addGrid(sides, cells, [&](double u, double v) {
                if (!isUpper)
                    std::swap(u, v);
                const double w = isUpper ? 1 : 0;
                const Vec3d at = axis == 0 ? Vec3d(w, u, v) : axis == 1 ? Vec3d(v, w, u) : Vec3d(u, v, w);
                return Posd(at.x * size.x, at.y * size.y, at.z * size.z);
            });
    return cam::weld(sides);
}

TriangleSurface waveSheet(unsigned cells)
{
    TriangleSurface surface;
    addGrid(surface, cells, [](double u, double v) {
        return Posd(40 * u, 40 * v, std::sin(9 * u) * std::cos(7 * v) + 0.2 * std::sin(40 * u));
    });
    return surface;
}

TriangleSurface finOnSheet(unsigned cells)
{
    TriangleSurface surface;
    addGrid(surface, cells, [](double u, double v) { return Posd(40 * u, 40 * v, 0); });
    addGrid(surface, cells, [](double u, double v) { return Posd(20, 40 * u, 15 * v); });
    return cam::weld(surface);
}

TriangleSurface soupOf(const TriangleSurface& surface)
{
    TriangleSurface soup;
    for (const auto& t : surface.triangles) {
        const auto first = static_cast<std::uint32_t>(soup.vertices.size());
        for (const auto vertex : t)
            soup.vertices.push_back(surface.vertices[vertex]);
        soup.triangles.push_back({first, first + 1, first + 2});
    }
    return soup;
}

namespace {

/// visit(square of the distance), of places on a surface, drawn evenly over its area.
template <typename Visit>
void forDistances(const TriangleSurface& from, const cam::SurfaceTree& tree, unsigned count, const Visit& visit)
{
    std::vector<double> areas;
    double sum = 0;
    forTriangles(from, [&](const Posd& a, const Posd& b, const Posd& c) {
        sum += (b - a).cross(c - a).length();
        areas.push_back(sum);
    });
    std::mt19937 random(7);
    std::uniform_real_distribution<double> part(0, 1);
    for (unsigned i = 0; i < count && sum > 0; ++i) {
        const auto found = std::ranges::upper_bound(areas, part(random) * sum);
        const auto k = std::min<std::size_t>(static_cast<std::size_t>(found - areas.begin()), areas.size() - 1);
        double u = part(random), v = part(random);
        if (u + v > 1) {
            u = 1 - u;
            v = 1 - v;
        }
        const auto& t = from.triangles[k];
        const Posd &a = from.vertices[t[0]], &b = from.vertices[t[1]], &c = from.vertices[t[2]];
        visit(tree.squaredDistance(Vec3d(a) + (b - a) * u + (c - a) * v));
    }
}

} // namespace

double farthest(const TriangleSurface& from, const TriangleSurface& to, unsigned count)
{
    const cam::SurfaceTree tree(to);
    double square = 0;
    for (const Posd& vertex : from.vertices)
        square = std::max(square, tree.squaredDistance(Vec3d(vertex)));
    forDistances(from, tree, count, [&](double other) { square = std::max(square, other); });
    return std::sqrt(square);
}

double rms(const TriangleSurface& from, const TriangleSurface& to)
{
    constexpr unsigned count = 20000;
    double sum = 0;
    forDistances(from, cam::SurfaceTree(to), count, [&sum](double square) { sum += square; });
    return std::sqrt(sum / count);
}

EdgeCounts edgesOf(const TriangleSurface& surface)
{
    EdgeCounts counts;
    for (const auto& [ends, ways] : edgeTable(surface))
        ++(ways.first + ways.second == 1         ? counts.borders
           : ways.first == 1 && ways.second == 1 ? counts.pairs
                                                 : counts.more);
    return counts;
}

long eulerNumber(const TriangleSurface& surface)
{
    return static_cast<long>(surface.vertices.size()) - static_cast<long>(edgeTable(surface).size()) +
           static_cast<long>(surface.triangles.size());
}

double endsLength(const TriangleSurface& surface)
{
    double sum = 0;
    for (const auto& [ends, ways] : edgeTable(surface))
        if (ways.first != 1 || ways.second != 1)
            sum += (surface.vertices[ends.second] - surface.vertices[ends.first]).length();
    return sum;
}

double areaOf(const TriangleSurface& surface)
{
    double sum = 0;
    forTriangles(surface,
                 [&](const Posd& a, const Posd& b, const Posd& c) { sum += (b - a).cross(c - a).length() / 2; });
    return sum;
}

double volumeOf(const TriangleSurface& surface)
{
    double sum = 0;
    forTriangles(surface, [&](const Posd& a, const Posd& b, const Posd& c) {
        sum += Vec3d(a).dot(Vec3d(b).cross(Vec3d(c))) / 6;
    });
    return sum;
}

double leastArea(const TriangleSurface& surface)
{
    double least = std::numeric_limits<double>::infinity();
    forTriangles(surface, [&](const Posd& a, const Posd& b, const Posd& c) {
        least = std::min(least, (b - a).cross(c - a).length() / 2);
    });
    return least;
}

double meanEdge(const TriangleSurface& surface)
{
    double sum = 0;
    forTriangles(surface, [&](const Posd& a, const Posd& b, const Posd& c) {
        sum += (b - a).length() + (c - b).length() + (a - c).length();
    });
    return sum / (3 * static_cast<double>(surface.triangles.size()));
}

double meanSmallestAngle(const TriangleSurface& surface)
{
    double sum = 0;
    forTriangles(surface, [&](const Posd& a, const Posd& b, const Posd& c) {
        const auto at = [](const Posd& corner, const Posd& one, const Posd& other) {
            const Vec3d u = one - corner, v = other - corner;
            return std::acos(std::clamp(u.dot(v) / (u.length() * v.length()), -1.0, 1.0));
        };
        sum += std::min({at(a, b, c), at(b, c, a), at(c, a, b)}) * 180 / std::numbers::pi;
    });
    return sum / static_cast<double>(surface.triangles.size());
}

bool isSame(const TriangleSurface& a, const TriangleSurface& b)
{
    return a.triangles == b.triangles && a.vertices == b.vertices;
}

} // namespace vrk::test
