#include "canvas/BodyEdge.h"

#include "scene/Scene.h"
#include "visual/SolidVisual.h"

#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>

namespace vrkview {

using vrk::visual::Scene;

TopoDS_Edge edgeOfBody(unsigned body, unsigned edge)
{
    const auto* solid =
        Scene::HasVisual(body) ? dynamic_cast<const vrk::visual::SolidVisual*>(Scene::GetVisual(body)) : nullptr;
    if (!solid)
        return {};
    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(solid->getShape(), TopAbs_EDGE, edges);
    return edge >= 1 && static_cast<int>(edge) <= edges.Size() ? TopoDS::Edge(edges(static_cast<int>(edge)))
                                                               : TopoDS_Edge();
}

} // namespace vrkview
