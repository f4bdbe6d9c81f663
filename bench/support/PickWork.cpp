#include "bench/support/PickWork.h"

#include "bench/support/Rng.h"

#include "scene/math/Trsf.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Tool.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp.hxx>
#include <TopLoc_Location.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <cmath>
#include <numbers>
#include <stdexcept>
#include <string>

namespace vrk::bench {
namespace {

constexpr double pi = std::numbers::pi;

/// @param number  of the face in the whole station.
void addFace(PickStation::Triangles& triangles, const TopoDS_Face& face, unsigned number)
{
    TopLoc_Location location;
    const Handle(Poly_Triangulation) mesh = BRep_Tool::Triangulation(face, location);
    const auto first = static_cast<unsigned>(triangles.vertices.size());
    for (int i = 1; i <= mesh->NbNodes(); ++i)
        triangles.vertices.push_back(rob::toPosf(mesh->Node(i).Transformed(location)));
    for (int i = 1; i <= mesh->NbTriangles(); ++i) {
        int a = 0, b = 0, c = 0;
        mesh->Triangle(i).Get(a, b, c);
        if (face.Orientation() == TopAbs_REVERSED)
            std::swap(b, c);
        for (const int node : {a, b, c})
            triangles.indices.push_back(first + static_cast<unsigned>(node - 1));
        triangles.faces.push_back(number);
    }
}

void checkCounts(const PickStation& station, unsigned faces)
{
    std::size_t triangles = 0, vertices = 0;
    for (const PickStation::Triangles& solid : station.triangles) {
        triangles += solid.faces.size();
        vertices += solid.vertices.size();
    }
    if (faces != 20'000 || triangles != 1'374'428 || vertices != 1'167'028)
        throw std::logic_error("the station is another one: " + std::to_string(faces) + " faces, " +
                               std::to_string(triangles) + " triangles, " + std::to_string(vertices) + " vertices");
}

/// The pixel is not set.
PickPixel viewOf(unsigned k)
{
    const double a = 2 * pi * k / 10, radius = k % 2 == 0 ? 12000 : 7000;
    const rob::Vec3d eye(10000 + radius * std::cos(a), 10000 + radius * std::sin(a), k % 2 == 0 ? 3800 : 8000);
    const rob::Vec3d center(10000, 10000, k % 2 == 0 ? 1200 : 1500);
    const rob::Vec3d forward(rob::normalized(center - eye));
    const rob::Vec3d right(rob::normalized(forward.cross(rob::Vec3d(0, 0, 1))));
    return {eye, forward, right, right.cross(forward), 0, 0};
}

} // namespace

PickStation makePickStation(unsigned solidCount)
{
    PickStation station;
    unsigned faces = 0;
    for (unsigned i = 0; i < solidCount; ++i) {
        PosedSolid solid = makeSolid(i);
        const BRepMesh_IncrementalMesh mesher(solid.shape, 2.0, false, 0.45, false);
        station.firstFace.push_back(faces);
        TopTools_IndexedMapOfShape map;
        TopExp::MapShapes(solid.shape, TopAbs_FACE, map);
        PickStation::Triangles& triangles = station.triangles.emplace_back();
        for (int f = 1; f <= map.Extent(); ++f)
            addFace(triangles, TopoDS::Face(map(f)), faces++);
        triangles.vertices.reserve(triangles.vertices.size() + 1); // Embree reads past the end
        station.solids.push_back(std::move(solid));
    }
    if (solidCount == pickStationSolids)
        checkCounts(station, faces);
    return station;
}

std::vector<PickPixel> makePickPixels()
{
    Rng r(0x5EED0001);
    std::vector<PickPixel> pixels;
    for (unsigned i = 0; i < 10'000; ++i) {
        PickPixel pixel = viewOf(i % 10);
        pixel.x = static_cast<double>(r.below(1920)) + 0.5;
        pixel.y = static_cast<double>(r.below(1080)) + 0.5;
        pixels.push_back(pixel);
    }
    return pixels;
}

std::vector<visual::Ray> makePickRays()
{
    const double half = std::tan(pickFovY / 2);
    std::vector<visual::Ray> rays;
    for (const PickPixel& pixel : makePickPixels()) {
        const double x = (pixel.x / 1920 * 2 - 1) * half * 1920 / 1080, y = (1 - pixel.y / 1080 * 2) * half;
        const rob::Vec3d d = pixel.forward + pixel.right * x + pixel.up * y;
        rays.emplace_back(rob::Posf(pixel.eye), rob::Dirf(rob::normalized(d)));
    }
    return rays;
}

std::vector<visual::Ray> makeBigMeshRays()
{
    Rng r(0x5EED0002);
    std::vector<visual::Ray> rays;
    for (unsigned i = 0; i < 10'000; ++i) {
        const double u = r.uni(-1, 1), angle = r.uni(0, 2 * pi), s = std::sqrt(1 - u * u);
        const rob::Vec3d origin = rob::Vec3d(s * std::cos(angle), s * std::sin(angle), u) * 3000.0;
        const double x = r.uni(-1400, 1400), y = r.uni(-1400, 1400), z = r.uni(-480, 480);
        rays.emplace_back(rob::Posf(origin), rob::Dirf(rob::normalized(rob::Vec3d(x, y, z) - origin)));
    }
    return rays;
}

} // namespace vrk::bench
