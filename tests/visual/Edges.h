#pragma once

#include "visual/DynamicLines.h"
#include "visual/Visual.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRep_Builder.hxx>
#include <Ogre.h>
#include <Poly_Polygon3D.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Wire.hxx>

#include <vector>

namespace vrk::test {

/// Stores a polygon through `nodes` in the edge.
inline TopoDS_Edge withPolygon(const TopoDS_Edge& edge, const std::vector<gp_Pnt>& nodes)
{
    TColgp_Array1OfPnt array(1, static_cast<int>(nodes.size()));
    for (std::size_t i = 0; i < nodes.size(); ++i)
        array(static_cast<int>(i) + 1) = nodes[i];
    BRep_Builder().UpdateEdge(edge, Handle(Poly_Polygon3D)(new Poly_Polygon3D(array)));
    return edge;
}

/// A straight edge with its polygon.
inline TopoDS_Edge straightEdge(const gp_Pnt& from, const gp_Pnt& to)
{
    return withPolygon(BRepBuilderAPI_MakeEdge(from, to).Edge(), {from, to});
}

/// Three straight edges through four points.
inline TopoDS_Wire wireOfThree(const gp_Pnt& a, const gp_Pnt& b, const gp_Pnt& c, const gp_Pnt& d)
{
    // With one vertex between neighbours: the wire would else take copies of the edges, which have no polygon.
    const std::vector<gp_Pnt> points{a, b, c, d};
    std::vector<TopoDS_Vertex> corners;
    for (const gp_Pnt& point : points)
        corners.push_back(BRepBuilderAPI_MakeVertex(point).Vertex());
    BRepBuilderAPI_MakeWire wire;
    for (std::size_t i = 0; i < 3; ++i)
        wire.Add(withPolygon(BRepBuilderAPI_MakeEdge(corners[i], corners[i + 1]).Edge(), {points[i], points[i + 1]}));
    return wire.Wire();
}

inline std::vector<visual::Visual*> childrenOf(const visual::Visual& visual)
{
    return {visual.getChildren().begin(), visual.getChildren().end()};
}

inline std::vector<visual::Visual*> childrenOfType(const visual::Visual& visual, VisualType type)
{
    std::vector<visual::Visual*> found = childrenOf(visual);
    std::erase_if(found, [type](const visual::Visual* child) { return child->getType() != type; });
    return found;
}

/// The vertex data that OGRE draws a line from.
inline Ogre::VertexData& vertexDataOf(const visual::DynamicLines& line)
{
    Ogre::RenderOperation operation;
    const_cast<visual::DynamicLines&>(line).getRenderOperation(operation); // OGRE's own is not const
    return *operation.vertexData;
}

/// What lies in the vertex buffer of a line.
inline std::vector<rob::Posf> uploaded(const visual::DynamicLines& line)
{
    const Ogre::VertexData& data = vertexDataOf(line);
    const Ogre::HardwareBufferLockGuard lock(data.vertexBufferBinding->getBuffer(0),
                                             Ogre::HardwareBuffer::HBL_READ_ONLY);
    const auto* first = static_cast<const rob::Posf*>(lock.pData);
    return {first, first + data.vertexCount};
}

/// The name of the material of the first thing on the visual's node.
inline std::string materialOf(const visual::Visual& visual)
{
    return dynamic_cast<const Ogre::SimpleRenderable&>(*visual.getSceneNode()->getAttachedObjects().front())
        .getMaterial()
        ->getName();
}

} // namespace vrk::test
