#include "selection/CurveObject.h"

#include "selection/SensitiveEdge.h"
#include "visual/CurveVisual.h"
#include "visual/EdgeVisual.h"
#include "visual/VisualCast.h"

namespace vrk::selection {

CurveObject::CurveObject(const TopoDS_Shape& shape, visual::CurveVisual* visual)
    : SelectableObject(ObjectKind::Curve, visual), shape(shape)
{
}

void CurveObject::buildPrimitives()
{
    for (visual::Visual* child : visual->getChildren())
        if (auto* edge = visual::visualCast<visual::EdgeVisual>(child, VisualType::Edge))
            primitives.push_back(new SensitiveEdge(edge, edge->getEdge()));
    buildHierarchy();
}

void CurveObject::intersectRay(Result& result, const visual::Ray& ray) const
{
    closestHitRay(result, ray.transformed(inverseWorldPose));
    if (!result.hit)
        return;
    finish(result);
    result.shape = shape;
    result.pose = worldPose;
}

} // namespace vrk::selection
