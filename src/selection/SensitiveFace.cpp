#include "selection/SensitiveFace.h"

#include "scene/math/Trsf.h"

#include <BRep_Tool.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>

namespace vrk::selection {
namespace {

struct Nodes {
    int first, second, third;

    Nodes(const Poly_Triangulation& triangulation, int index)
    {
        triangulation.Triangle(index).Get(first, second, third);
    }
};

} // namespace

SensitiveFace::SensitiveFace(const TopoDS_Shape& shape, unsigned faceIndex)
    : faceIndex(faceIndex), face(TopoDS::Face(shape))
{
    TopLoc_Location location;
    triangulation = BRep_Tool::Triangulation(face, location);
    if (const TopLoc_Location& own = face.Location(); !own.IsIdentity()) {
        hasPose = true;
        takePose(rob::GP_Trsf2Posef(own.Transformation()));
    }
    if (triangulation.IsNull())
        return;
    buildTriangles();
    buildHierarchy();
    if (isEmpty())
        return;
    box = getBounds();
    if (hasPose)
        box.transform(pose);
}

void SensitiveFace::buildTriangles()
{
    const int count = triangulation->NbTriangles();
    SensitiveIndexedTriangle* const first = makeTriangles(static_cast<std::size_t>(count));
    SensitiveIndexedTriangle* next = first;
    for (int index = 1; index <= count; ++index) {
        const Nodes nodes(*triangulation, index);
        next->box = Box();
        bool isFinite = true;
        for (const int node : {nodes.first, nodes.second, nodes.third}) {
            const rob::PosTemplate<float> corner = rob::toPosf(triangulation->Node(node));
            isFinite = isFinite && corner.isFinite();
            next->box.addPoint(corner);
        }
        if (!isFinite)
            continue;
        next->index = static_cast<unsigned>(index);
        next->box.expand(); // so that a flat triangle has a box with an inside
        next->box.updateCenter();
        ++next;
    }
    keepFirst(static_cast<std::size_t>(next - first));
}

void SensitiveFace::getTriangle(rob::TriangleTemplate<float>& triangle, const SensitiveIndexedTriangle& primitive) const
{
    getTriangles(&triangle, &primitive.index, 1);
}

void SensitiveFace::getTriangles(rob::TriangleTemplate<float>* triangles, const unsigned* indices, unsigned count) const
{
    for (unsigned i = 0; i < count; ++i) {
        const Nodes nodes(*triangulation, static_cast<int>(indices[i]));
        triangles[i].a = rob::toPosf(triangulation->Node(nodes.third));
        triangles[i].b = rob::toPosf(triangulation->Node(nodes.second));
        triangles[i].c = rob::toPosf(triangulation->Node(nodes.first));
    }
}

rob::TriangleTemplate<double> SensitiveFace::getStoredTriangle(unsigned index) const
{
    const Nodes nodes(*triangulation, static_cast<int>(index));
    const auto at = [this](int node) {
        const gp_Pnt p = triangulation->Node(node);
        return rob::PosTemplate<double>(p.X(), p.Y(), p.Z());
    };
    return {at(nodes.third), at(nodes.second), at(nodes.first)};
}

void SensitiveFace::intersectLine(Result& result, const rob::LineTemplate<float>& line) const
{
    result = Result();
    if (isEmpty())
        return;
    nearestOfLine(result, hasPose ? line.transformed(inversePose) : line);
    result.face = face;
}

void SensitiveFace::intersectTriangle(Result& result, const rob::TriangleTemplate<float>& triangle) const
{
    result = Result();
    if (isEmpty())
        return;
    anyOfTriangle(result, hasPose ? triangle.transformed(inversePose) : triangle);
    result.face = face;
}

void SensitiveFace::intersectRay(Result& result, const visual::Ray& ray) const
{
    result = Result();
    if (isEmpty())
        return;
    nearestOfRay(result, hasPose ? ray.transformed(inversePose) : ray);
    result.face = face;
}

bool SensitiveFace::nearestInShape(RayHit& hit, const visual::Ray& ray, float limit) const
{
    if (!nearestOfRay(hit, hasPose ? ray.transformed(inversePose) : ray, limit))
        return false;
    hit.point = pose * hit.point;
    return true;
}

} // namespace vrk::selection
