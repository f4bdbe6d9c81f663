#include "platform/geometry/TriangleMesh.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numeric>
#include <unordered_map>

namespace vrk::geometry {
namespace {

// A fan of more than so many triangles is round whatever it is of; to compare each with each would take its square.
constexpr std::size_t largestFan = 128;

struct PlaceHash {
    std::size_t operator()(const rob::Posf& p) const
    {
        std::size_t hash = 0;
        for (const float c : {p.x, p.y, p.z})
            hash = (hash ^ std::bit_cast<std::uint32_t>(c == 0 ? 0.0f : c)) * 0x9E3779B97F4A7C15ull;
        return hash ^ (hash >> 32);
    }
};

/// The number of the first point of the same place, for each point.
std::vector<unsigned> placesOf(const std::vector<rob::Posf>& points)
{
    std::unordered_map<rob::Posf, unsigned, PlaceHash> known;
    known.reserve(points.size());
    std::vector<unsigned> places(points.size());
    for (unsigned i = 0; i < places.size(); ++i)
        places[i] = known.try_emplace(points[i], i).first->second;
    return places;
}

rob::Vec3d cornerOf(const TriangleMesh& mesh, std::size_t corner)
{
    const rob::Posf& p = mesh.points[mesh.indices[corner]];
    return {p.x, p.y, p.z};
}

rob::Vec3d directionOf(const rob::Vec3d& v)
{
    const double length = v.length();
    return length > 0 && std::isfinite(length) ? v * (1 / length) : rob::Vec3d();
}

struct Corners {
    std::vector<rob::Vec3d> directions; ///< normals, one for each triangle; those without an area have none
    std::vector<double> angles;         ///< at each corner, in radians
};

Corners cornersOf(const TriangleMesh& mesh)
{
    Corners corners;
    corners.directions.resize(mesh.indices.size() / 3);
    corners.angles.resize(mesh.indices.size());
    for (std::size_t t = 0; t < corners.directions.size(); ++t) {
        const std::array places{cornerOf(mesh, 3 * t), cornerOf(mesh, 3 * t + 1), cornerOf(mesh, 3 * t + 2)};
        corners.directions[t] = directionOf((places[1] - places[0]).cross(places[2] - places[0]));
        for (std::size_t i = 0; i < 3; ++i) {
            const rob::Vec3d one = places[(i + 1) % 3] - places[i], other = places[(i + 2) % 3] - places[i];
            corners.angles[3 * t + i] = std::atan2(one.cross(other).length(), one.dot(other));
        }
    }
    return corners;
}

/// The corners of triangles by the place at which they lie: those of place p are `corners[starts[p]]` up to `starts[p + 1]`.
struct CornersByPlace {
    std::vector<std::size_t> starts;
    std::vector<std::size_t> corners;

    CornersByPlace(const std::vector<unsigned>& places, const std::vector<unsigned>& indices)
        : starts(places.size() + 1), corners(indices.size())
    {
        for (const unsigned index : indices)
            ++starts[places[index] + 1];
        std::partial_sum(starts.begin(), starts.end(), starts.begin());
        std::vector<std::size_t> next(starts.begin(), starts.end() - 1);
        for (std::size_t corner = 0; corner < indices.size(); ++corner)
            corners[next[places[indices[corner]]]++] = corner;
    }
};

/// Hands out points with a normal, one for all corners that have the same point and normal.
class Splitter {
public:
    explicit Splitter(TriangleMesh& mesh) : mesh(mesh), first(mesh.points.size(), none), next(mesh.points.size(), none)
    {
        mesh.normals.assign(mesh.points.size(), {});
    }

    unsigned pointWith(unsigned point, const rob::Vec3f& normal)
    {
        if (first[point] == none) {
            first[point] = point;
            mesh.normals[point] = normal;
            return point;
        }
        unsigned at = point;
        for (;; at = next[at]) {
            const rob::Vec3f& has = mesh.normals[at];
            if (has.x == normal.x && has.y == normal.y && has.z == normal.z)
                return at;
            if (next[at] == none)
                break;
        }
        const auto made = static_cast<unsigned>(mesh.points.size());
        mesh.points.push_back(rob::Posf(mesh.points[point]));
        mesh.normals.push_back(normal);
        if (!mesh.colors.empty())
            mesh.colors.push_back(PointColor(mesh.colors[point]));
        next[at] = made;
        next.push_back(none);
        return made;
    }

private:
    static constexpr unsigned none = ~0u;

    TriangleMesh& mesh;
    std::vector<unsigned> first; // the point itself once it has a normal
    std::vector<unsigned> next;  // of the points made of one, in a chain
};

} // namespace

void addCreaseNormals(TriangleMesh& mesh, double angle)
{
    const auto [directions, angles] = cornersOf(mesh);
    const CornersByPlace byPlace(placesOf(mesh.points), mesh.indices);
    const double least = std::cos(angle);
    Splitter splitter(mesh);
    std::vector<rob::Vec3f> fan;
    for (std::size_t place = 0; place + 1 < byPlace.starts.size(); ++place) {
        const std::size_t begin = byPlace.starts[place], end = byPlace.starts[place + 1];
        const bool isRound = end - begin > largestFan;
        fan.clear();
        for (std::size_t i = begin; i < end && (!isRound || i == begin); ++i) {
            const rob::Vec3d& own = directions[byPlace.corners[i] / 3];
            rob::Vec3d sum;
            for (std::size_t k = begin; k < end; ++k) {
                const rob::Vec3d& other = directions[byPlace.corners[k] / 3];
                if (isRound || own.dot(other) >= least)
                    sum = sum + other * angles[byPlace.corners[k]];
            }
            const rob::Vec3d mean = directionOf(sum);
            fan.emplace_back(rob::Vec3f(mean.length() > 0 ? mean : own));
        }
        for (std::size_t i = begin; i < end; ++i) {
            unsigned& index = mesh.indices[byPlace.corners[i]];
            index = splitter.pointWith(index, fan[isRound ? 0 : i - begin]);
        }
    }
}

} // namespace vrk::geometry
