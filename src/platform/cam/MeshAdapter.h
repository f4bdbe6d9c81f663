#pragma once

#include "platform/cam/TMesh.h"
#include "platform/cam/TriangleSurface.h"

/// Not installed.
namespace vrk::cam {

/// @throws std::out_of_range  for a triangle of a vertex that there is not.
template <typename T>
TriangleSurface weldedOf(const cadcam::TMesh<T>& mesh)
{
    TriangleSurface soup;
    soup.vertices.reserve(mesh.vertices()->size());
    for (const auto& p : *mesh.vertices())
        soup.vertices.emplace_back(p.x, p.y, p.z);
    soup.triangles.reserve(mesh.triangles()->size());
    for (const auto& triangle : *mesh.triangles())
        soup.triangles.push_back({triangle.vertices[0], triangle.vertices[1], triangle.vertices[2]});
    return weld(soup);
}

/// With normals: of each triangle (a, b, c) the cross product of (c - b) with (a - b), of each vertex the direction of the sum
/// of those around it.
template <typename T>
cadcam::TMesh<T> meshOf(const TriangleSurface& surface)
{
    using Point = cadcam::TPoint3d<T>;
    const auto pointOf = [](const auto& v) {
        return Point{static_cast<T>(v.x), static_cast<T>(v.y), static_cast<T>(v.z)};
    };
    std::vector<Point> vertices;
    vertices.reserve(surface.vertices.size());
    for (const rob::Posd& place : surface.vertices)
        vertices.push_back(pointOf(place));
    std::vector<rob::Vec3d> sums(surface.vertices.size());
    std::vector<cadcam::TTriangle<Point>> triangles;
    triangles.reserve(surface.triangles.size());
    for (const TriangleSurface::Triangle& t : surface.triangles) {
        const rob::Posd &a = surface.vertices[t[0]], &b = surface.vertices[t[1]], &c = surface.vertices[t[2]];
        const rob::Vec3d normal = (c - b).cross(a - b);
        for (const std::uint32_t vertex : t)
            sums[vertex] += normal;
        cadcam::TTriangle<Point> triangle;
        triangle.vertices = {t[0], t[1], t[2]};
        triangle.normal = pointOf(normal);
        triangles.push_back(triangle);
    }
    cadcam::TMesh<T> mesh(std::move(vertices), std::move(triangles));
    mesh.normals()->reserve(sums.size());
    for (const rob::Vec3d& sum : sums) {
        const double length = sum.length();
        mesh.normals()->push_back(pointOf(length > 0 ? sum / length : sum));
    }
    return mesh;
}

} // namespace vrk::cam
