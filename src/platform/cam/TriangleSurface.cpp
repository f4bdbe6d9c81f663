#include "platform/cam/TriangleSurface.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <unordered_set>

namespace vrk::cam {
namespace {

using Triangle = TriangleSurface::Triangle;

/// So that squares of squares of distances are finite.
constexpr double mostCoordinate = 1e30;

bool isReckonable(const rob::Posd& p)
{
    return std::abs(p.x) <= mostCoordinate && std::abs(p.y) <= mostCoordinate && std::abs(p.z) <= mostCoordinate;
}

std::uint64_t mixed(std::uint64_t hash, std::uint64_t value)
{
    hash ^= value;
    hash *= 0x9E3779B97F4A7C15;
    return hash ^ hash >> 29;
}

std::uint64_t hashOf(const rob::Posd& p)
{
    std::uint64_t hash = 0;
    for (const double part : {p.x, p.y, p.z})
        hash = mixed(hash, std::bit_cast<std::uint64_t>(part + 0.0)); // -0 is 0
    return hash;
}

/// Numbers for places: equal ones have one. An open table, since it is asked for each corner of millions of triangles.
class Places {
public:
    explicit Places(std::size_t most) : slots(std::bit_ceil(2 * most + 2), free) {}

    std::uint32_t numberOf(const rob::Posd& p)
    {
        const std::size_t mask = slots.size() - 1;
        for (std::size_t i = hashOf(p) & mask;; i = (i + 1) & mask) {
            if (slots[i] == free) {
                slots[i] = static_cast<std::uint32_t>(places.size());
                places.push_back(p);
            }
            if (places[slots[i]] == p)
                return slots[i];
        }
    }

    std::vector<rob::Posd> places;

private:
    static constexpr std::uint32_t free = 0xFFFFFFFF;

    std::vector<std::uint32_t> slots;
};

bool hasArea(const rob::Posd& a, const rob::Posd& b, const rob::Posd& c)
{
    return (b - a).cross(c - a).length() > 0;
}

struct TriangleHash {
    std::size_t operator()(const Triangle& t) const { return mixed(mixed(mixed(0, t[0]), t[1]), t[2]); }
};

} // namespace

TriangleSurface weld(const TriangleSurface& soup)
{
    TriangleSurface result;
    Places places(soup.vertices.size());
    std::unordered_set<Triangle, TriangleHash> known;
    known.reserve(soup.triangles.size());
    for (const Triangle& triangle : soup.triangles) {
        const std::array<rob::Posd, 3> corners{soup.vertices.at(triangle[0]), soup.vertices.at(triangle[1]),
                                               soup.vertices.at(triangle[2])};
        if (!std::ranges::all_of(corners, isReckonable) || !hasArea(corners[0], corners[1], corners[2]))
            continue;
        Triangle numbers{};
        std::ranges::transform(corners, numbers.begin(), [&](const rob::Posd& p) { return places.numberOf(p); });
        Triangle rising = numbers; // the same triangle, whichever corner comes first
        std::ranges::rotate(rising, std::ranges::min_element(rising));
        if (known.insert(rising).second)
            result.triangles.push_back(numbers);
    }
    result.vertices = std::move(places.places);
    return result;
}

} // namespace vrk::cam
