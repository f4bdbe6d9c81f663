#include "platform/process/Coat.h"

#include "platform/cam/NearestOn.h"
#include "platform/process/SphereTree.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace vrk::process {
namespace {

/// A cone as spheres are tested against it.
class SprayCone {
public:
    SprayCone(const SprayGun& gun, const SprayPlace& place)
        : nozzle(place.nozzle), axis(place.axis), sine(std::sin(gun.halfAngle)), cosine(std::cos(gun.halfAngle)),
          reach(gun.reach)
    {
    }

    /// Whether some of the sphere may lie in it.
    bool meets(const Sphere& sphere) const
    {
        const rob::Vec3d from = rob::Vec3d(sphere.middle) - nozzle;
        const double distance = from.length();
        const double radius = sphere.radius;
        const double wide = radius + 1e-5 * (distance + radius); // rounding
        const double depth = from.dot(axis);
        if (depth < -wide || distance > reach + wide)
            return false;
        const double aside = std::sqrt(std::max(distance * distance - depth * depth, 0.0));
        return aside * cosine - depth * sine <= wide;
    }

    const rob::Vec3d nozzle;
    const rob::Vec3d axis;

private:
    double sine, cosine, reach;
};

} // namespace

/// Those that may take paint, leaf after leaf of the tree.
struct Coat::Vertices {
    struct Vertex {
        rob::Posf place;
        rob::Vec3f normal;
        unsigned number;
    };

    SphereTree tree;
    std::vector<Vertex> ordered;
};

Coat::Coat(std::span<const rob::Posf> places, std::span<const rob::Vec3f> normals) : thickness(places.size())
{
    if (normals.size() != places.size())
        throw std::invalid_argument("a coat needs one normal for each vertex");
    std::vector<unsigned> numbers;
    std::vector<Sphere> spheres;
    for (std::size_t i = 0; i < places.size(); ++i)
        if (places[i].isFinite() && normals[i].isFinite()) {
            numbers.push_back(static_cast<unsigned>(i));
            spheres.push_back({rob::Vec3f(places[i]), 0});
        }
    auto made = std::make_shared<Vertices>();
    made->tree = SphereTree(spheres);
    made->ordered.reserve(numbers.size());
    for (const unsigned at : made->tree.getOrder())
        made->ordered.push_back({places[numbers[at]], normals[numbers[at]], numbers[at]});
    vertices = std::move(made);
}

void Coat::setThickness(std::vector<float> given)
{
    if (given.size() != thickness.size())
        throw std::invalid_argument("a coat needs one thickness for each vertex");
    if (!std::ranges::all_of(given, [](float value) { return value >= 0 && std::isfinite(value); }))
        throw std::invalid_argument("a thickness must be 0 or more");
    thickness = std::move(given);
}

void Coat::clear()
{
    std::ranges::fill(thickness, 0.0f);
}

void Coat::spray(const SprayGun& gun, const SprayPlace& place, double seconds, std::vector<unsigned>& touched)
{
    if (!vertices)
        return;
    const SprayCone cone(gun, place);
    const auto meets = [&cone](const Sphere& sphere) { return cone.meets(sphere); };
    vertices->tree.walk(meets, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            const Vertices::Vertex& vertex = vertices->ordered[i];
            const rob::Vec3d fromNozzle = rob::Vec3d(vertex.place) - cone.nozzle;
            const double grown = seconds * gun.rateAt(fromNozzle, cone.axis, rob::Vec3d(vertex.normal));
            if (!(grown > 0))
                continue;
            thickness[vertex.number] += static_cast<float>(grown);
            touched.push_back(vertex.number);
        }
    });
}

void Coat::sprayAlong(const SprayGun& gun, const SprayWay& way, double from, double to, double piece,
                      std::vector<unsigned>& touched)
{
    gun.check();
    from = std::clamp(from, 0.0, way.length());
    to = std::clamp(to, 0.0, way.length());
    if (!(to > from))
        return;
    constexpr double mostPieces = 1e7;
    const double count = std::ceil((to - from) / piece);
    if (!(piece > 0 && count <= mostPieces))
        throw std::invalid_argument("the pieces of a spray's way must be above 0, and no more than ten million");
    const double length = (to - from) / count;
    for (double i = 0; i < count; ++i)
        spray(gun, way.at(from + (i + 0.5) * length), length / way.getSpeed(), touched);
}

// ---- the probe

struct CoatProbe::Surface {
    struct Triangle {
        std::array<unsigned, 3> corners;
        rob::Vec3d a, b, c;
    };

    SphereTree tree;
    std::vector<Triangle> ordered;
};

CoatProbe::CoatProbe(std::span<const rob::Posf> vertices, std::span<const unsigned> indices)
{
    std::vector<Surface::Triangle> triangles;
    std::vector<Sphere> spheres;
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        const std::array<unsigned, 3> corners{indices[i], indices[i + 1], indices[i + 2]};
        if (!std::ranges::all_of(
                corners, [&](unsigned vertex) { return vertex < vertices.size() && vertices[vertex].isFinite(); }))
            continue;
        const rob::Vec3f a(vertices[corners[0]]), b(vertices[corners[1]]), c(vertices[corners[2]]);
        const rob::Vec3f middle = (a + b + c) / 3.0f;
        const float radius = std::max({(a - middle).length(), (b - middle).length(), (c - middle).length()});
        triangles.push_back({corners, rob::Vec3d(a), rob::Vec3d(b), rob::Vec3d(c)});
        spheres.push_back({middle, radius});
    }
    auto made = std::make_shared<Surface>();
    made->tree = SphereTree(spheres);
    made->ordered.reserve(triangles.size());
    for (const unsigned at : made->tree.getOrder())
        made->ordered.push_back(triangles[at]);
    surface = std::move(made);
}

double CoatProbe::Found::valueOf(std::span<const float> values) const
{
    double sum = 0;
    for (std::size_t k = 0; k < 3; ++k)
        sum += weights[k] * static_cast<double>(values[corners[k]]);
    return sum;
}

std::optional<CoatProbe::Found> CoatProbe::at(const rob::Posd& place, const rob::Vec3d& normal, double reach) const
{
    if (!place.isFinite() || !(reach >= 0))
        return std::nullopt;
    const rob::Vec3d from(place);
    const Surface::Triangle* nearest = nullptr;
    rob::Vec3d on;
    double limit = reach;
    const auto meets = [&](const Sphere& sphere) {
        const double distance = (rob::Vec3d(sphere.middle) - from).length();
        return distance - sphere.radius <= limit + 1e-5 * (distance + sphere.radius); // rounding
    };
    surface->tree.walk(meets, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            const Surface::Triangle& t = surface->ordered[i];
            if (!((t.b - t.a).cross(t.c - t.a).dot(normal) > 0))
                continue;
            const rob::Vec3d candidate = cam::nearestOn(t.a, t.b, t.c, from).place;
            const double distance = (candidate - from).length();
            if (distance > limit || (nearest && distance == limit))
                continue;
            limit = distance;
            nearest = &t;
            on = candidate;
        }
    });
    if (!nearest)
        return std::nullopt;
    const auto& [corners, a, b, c] = *nearest;
    const rob::Vec3d across = (b - a).cross(c - a); // of some length: it faces somewhere
    const double ofA = (c - b).cross(on - b).dot(across) / across.squaredLength();
    const double ofB = (a - c).cross(on - c).dot(across) / across.squaredLength();
    return Found{corners, {ofA, ofB, 1 - ofA - ofB}, limit};
}

} // namespace vrk::process
