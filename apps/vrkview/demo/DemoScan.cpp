#include "demo/DemoScan.h"

#include "demo/DemoShapes.h"
#include "demo/KeptShapes.h"

#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/GeometryCache.h"

#include <BRep_Tool.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace vrkview::demo {
namespace {

using vrk::rob::Dirf;
using vrk::rob::Posf;
using vrk::rob::Vec3f;

constexpr std::size_t wantedPoints = 200000;
constexpr float floorRadius = 150; // millimetres
constexpr float floorKept = 0.34f; // of the floor's points, in the middle: it is dull and reflects little
constexpr float noise = 0.12f;     // millimetres, the spread of what is measured along a ray
constexpr int lines = 1160, samples = 1160;
const Posf scanner(330, -330, 240);
const Posf aim(-5, 0, 20);
constexpr float spread = 0.32f; // the half width of what is scanned, as a slope

struct Corner {
    Posf position;
    Vec3f normal;
};
using Triangle = std::array<Corner, 3>;

void addFloor(std::vector<Triangle>& triangles)
{
    constexpr int sectors = 96;
    const auto rim = [](int i) {
        const float angle = 2 * std::numbers::pi_v<float> * static_cast<float>(i) / sectors;
        return Corner{Posf(floorRadius * std::cos(angle), floorRadius * std::sin(angle), 0), Vec3f(0, 0, 1)};
    };
    for (int i = 0; i < sectors; ++i)
        triangles.push_back({Corner{Posf(0, 0, 0), Vec3f(0, 0, 1)}, rim(i), rim(i + 1)});
}

/// Of a shape that is meshed.
void addShape(std::vector<Triangle>& triangles, const TopoDS_Shape& shape)
{
    for (TopExp_Explorer face(shape, TopAbs_FACE); face.More(); face.Next()) {
        TopLoc_Location location;
        const Handle(Poly_Triangulation) mesh = BRep_Tool::Triangulation(TopoDS::Face(face.Current()), location);
        const gp_Trsf& trsf = location.Transformation();
        const auto corner = [&](int node) {
            const gp_Pnt p = mesh->Node(node).Transformed(trsf);
            const gp_Dir n = mesh->Normal(node).Transformed(trsf);
            return Corner{Posf(vrk::rob::Posd(p.X(), p.Y(), p.Z())),
                          Vec3f(static_cast<float>(n.X()), static_cast<float>(n.Y()), static_cast<float>(n.Z()))};
        };
        for (int i = 1; i <= mesh->NbTriangles(); ++i) {
            int a = 0, b = 0, c = 0;
            mesh->Triangle(i).Get(a, b, c);
            triangles.push_back({corner(a), corner(b), corner(c)});
        }
    }
}

/// What the scanner sees along each of its rays: the nearest surface.
class DepthPicture {
public:
    DepthPicture()
    {
        ahead = vrk::rob::normalized(aim - scanner);
        right = vrk::rob::normalized(ahead.cross(Dirf(0, 0, 1)));
        up = vrk::rob::normalized(right.cross(ahead));
    }

    void draw(const Triangle& triangle)
    {
        std::array<Posf, 3> seen; // x and y count rays, z is one over the depth: all three are linear in the picture
        std::ranges::transform(triangle, seen.begin(),
                               [this](const Corner& corner) { return project(corner.position); });
        const auto [minX, maxX] = std::minmax({seen[0].x, seen[1].x, seen[2].x});
        const auto [minY, maxY] = std::minmax({seen[0].y, seen[1].y, seen[2].y});
        for (int y = first(minY); y <= last(maxY, lines); ++y)
            for (int x = first(minX); x <= last(maxX, samples); ++x)
                drawRay(triangle, seen, x, y);
    }
    /// The surface points of all rays that met one.
    std::vector<Corner> hits() const
    {
        std::vector<Corner> found;
        for (const Ray& ray : rays)
            if (ray.inverseDepth > 0)
                found.push_back(ray.hit);
        return found;
    }

private:
    struct Ray {
        float inverseDepth = 0;
        Corner hit;
    };

    static int first(float low) { return std::max(0, static_cast<int>(std::ceil(low))); }
    static int last(float high, int count) { return std::min(count - 1, static_cast<int>(std::floor(high))); }

    Posf project(const Posf& point) const
    {
        const Vec3f away = point - scanner;
        const float depth = away.dot(ahead);
        return {(away.dot(right) / depth / spread + 1) * samples / 2, (away.dot(up) / depth / spread + 1) * lines / 2,
                1 / depth};
    }

    void drawRay(const Triangle& triangle, const std::array<Posf, 3>& seen, int x, int y)
    {
        const auto part = [&](int a, int b) { // twice the area of the triangle from an edge to the ray
            return (seen[b].x - seen[a].x) * (static_cast<float>(y) - seen[a].y) -
                   (seen[b].y - seen[a].y) * (static_cast<float>(x) - seen[a].x);
        };
        std::array<float, 3> weights{part(1, 2), part(2, 0), part(0, 1)};
        const float sum = weights[0] + weights[1] + weights[2];
        if (sum == 0 || std::ranges::any_of(weights, [sum](float w) { return w / sum < 0; }))
            return;
        float inverseDepth = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            weights[i] = weights[i] / sum * seen[i].z;
            inverseDepth += weights[i];
        }
        Ray& ray = rays[static_cast<std::size_t>(y) * samples + static_cast<std::size_t>(x)];
        if (inverseDepth <= ray.inverseDepth)
            return;
        ray.inverseDepth = inverseDepth;
        Posf position(0, 0, 0);
        Vec3f normal(0, 0, 0);
        for (std::size_t i = 0; i < 3; ++i) {
            const float share = weights[i] / inverseDepth;
            position = position + triangle[i].position * share;
            normal = normal + triangle[i].normal * share;
        }
        ray.hit = {position, normal};
    }

    Dirf ahead, right, up;
    std::vector<Ray> rays{static_cast<std::size_t>(lines) * samples};
};

/// Whether a point of the floor is left away, the more likely the nearer the rim.
bool isLost(const Posf& point, float chance)
{
    const float out = std::hypot(point.x, point.y) / floorRadius;
    return point.z < 0.01f && chance > floorKept * (1 - out * out);
}

/// A binary PLY file.
std::string plyText(const vrk::layout::PointCloud::Points& points, const vrk::layout::PointCloud::Normals& normals)
{
    std::string text = fmt::format("ply\nformat binary_little_endian 1.0\nelement vertex {}\n", points.size());
    for (const char* property : {"x", "y", "z", "nx", "ny", "nz"})
        text += fmt::format("property float {}\n", property);
    text += "end_header\n";
    for (std::size_t i = 0; i < points.size(); ++i) {
        const std::array<float, 6> values{points[i].x,  points[i].y,  points[i].z,
                                          normals[i].x, normals[i].y, normals[i].z};
        text.append(reinterpret_cast<const char*>(values.data()), sizeof values);
    }
    return text;
}

} // namespace

std::shared_ptr<vrk::layout::PointCloud> scanOfBracket(const vrk::rob::Posed& pose, float scale)
{
    std::vector<Triangle> triangles;
    addFloor(triangles);
    addShape(triangles, kept("Bracket that is scanned", bracket));
    DepthPicture picture;
    for (const Triangle& triangle : triangles)
        picture.draw(triangle);

    // Numbers by hand: the library's distributions are not the same everywhere.
    std::mt19937 random(7);
    const auto chance = [&random] { return static_cast<float>(random() >> 8) / 16777216.0f; };
    std::vector<Corner> hits = picture.hits();
    std::erase_if(hits, [&](const Corner& hit) { return isLost(hit.position, chance()); });

    vrk::layout::PointCloud::Points points;
    vrk::layout::PointCloud::Normals normals;
    std::size_t wanted = std::min(wantedPoints, hits.size());
    for (std::size_t i = 0; i < hits.size(); ++i) {
        // So many of the rest, each as likely as the others.
        if (chance() * static_cast<float>(hits.size() - i) >= static_cast<float>(wanted))
            continue;
        --wanted;
        const Dirf ray = vrk::rob::normalized(hits[i].position - scanner);
        const float error = noise * (chance() + chance() + chance() + chance() - 2);
        points.push_back(hits[i].position + ray * error);
        const Dirf normal = vrk::rob::normalized(hits[i].normal);
        normals.emplace_back(normal.x, normal.y, normal.z);
    }
    for (Posf& point : points)
        point = Posf(point.x * scale, point.y * scale, point.z * scale);
    // In the cache, so that a station which is saved takes the file along.
    const std::filesystem::path file =
        vrk::station::GeometryCache::Get("scan_of_the_bracket", fmt::format("demo station, scan 1 of scale {}", scale),
                                         ".ply", [&] { return plyText(points, normals); });
    auto cloud = std::make_shared<vrk::layout::PointCloud>(sdf::SdfManager::inst().generateId(), "Scan of the bracket",
                                                           std::move(points), std::move(normals));
    cloud->setGeometry(file.string(), "ply");
    cloud->setPose(pose);
    return cloud;
}

} // namespace vrkview::demo
