#include "selection/ShapeObject.h"

#include "selection/SensitiveFace.h"
#include "selection/ShapeParts.h"
#include "selection/geometry/BVHWalk.h"
#include "visual/SolidVisual.h"

#include <algorithm>
#include <ranges>

namespace vrk::selection {

ShapeObject::ShapeObject(const TopoDS_Shape& shape, visual::SolidVisual* visual)
    : SelectableObject(ObjectKind::Shape, visual), solid(visual), shape(shape)
{
}

ShapeObject::~ShapeObject() = default;

const ShapeBorders& ShapeObject::getBorders() const
{
    return parts->getBorders();
}

void ShapeObject::buildPrimitives()
{
    const layout::FaceMap& faces = solid->getFaceMap();
    const auto isVisible = [this](unsigned face) { return solid->isFaceVisible(face); };
    const bool isWhole = std::ranges::all_of(std::views::iota(1u, static_cast<unsigned>(faces.Size()) + 1), isVisible);
    if (isWhole && shape.IsEqual(solid->getShape()))
        parts = ShapeParts::Of(shape, faces);
    else
        parts = std::make_shared<const ShapeParts>(shape, faces, isVisible);
    borrowParts(*parts);
}

/// Bodies share a map of faces, which is made when it is first asked for.
bool ShapeObject::canBuildOnAnyThread()
{
    solid->getFaceMap();
    return true;
}

void ShapeObject::intersectLine(Result& result, const rob::LineTemplate<float>& line) const
{
    closestHitLine(result, line.transformed(inverseWorldPose));
    finish(result);
}

void ShapeObject::intersectTriangle(Result& result, const rob::TriangleTemplate<float>& triangle) const
{
    firstHitTriangle(result, triangle.transformed(inverseWorldPose));
    if (result.hit)
        result.visual = visual;
}

void ShapeObject::intersectRay(Result& result, const visual::Ray& ray) const
{
    intersectRayWithin(result, ray, Result().distance);
}

/// What `closestHitRay` answers, without a whole result for each face that is met.
void ShapeObject::intersectRayWithin(Result& result, const visual::Ray& ray, float limit) const
{
    result = Result();
    const visual::Ray local = ray.transformed(inverseWorldPose);
    const SensitiveFace* nearest = nullptr;
    SensitiveFace::RayHit hit;
    walkRayWithin(bvh.root, local, limit, [&](const BVHPrimitive* primitive) {
        const auto* face = static_cast<const SensitiveFace*>(primitive);
        if (!face->nearestInShape(hit, local, limit))
            return;
        limit = hit.distance;
        nearest = face;
    });
    if (!nearest)
        return;
    result.hit = true;
    result.distance = hit.distance;
    result.face = nearest->getFace();
    result.shape = shape;
    result.visual = visual;
    result.localPosition = hit.point;
    result.position = worldPose * hit.point;
    result.pose = worldPose;
}

std::string ShapeObject::getDescription() const
{
    return visual->getName();
}

} // namespace vrk::selection
