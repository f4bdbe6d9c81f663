#include "selection/ShapeEdges.h"

#include "platform/geometry/EdgePolygons.h"
#include "scene/math/Trsf.h"

#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>

namespace vrk::selection {

ShapeEdges::ShapeEdges(const TopoDS_Shape& shape)
{
    TopTools_IndexedMapOfShape all;
    TopExp::MapShapes(shape, TopAbs_EDGE, all);
    for (int i = 1; i <= all.Extent(); ++i) {
        Edge edge{static_cast<unsigned>(i), {}, nodes.size(), 0};
        geometry::forEachNode(TopoDS::Edge(all(i)), [&](const gp_Pnt& node) {
            const rob::PosTemplate<float> place = rob::toPosf(node);
            if (!place.isFinite())
                return;
            nodes.push_back(place);
            edge.box.addPoint(place);
        });
        edge.end = nodes.size();
        if (edge.end > edge.begin)
            edges.push_back(edge);
    }
}

} // namespace vrk::selection
