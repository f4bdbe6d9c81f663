#pragma once

#include "visual/DynamicLines.h"
#include "visual/Visual.h"

#include <memory>

class TopoDS_Shape;
class gp_Pnt;

namespace vrk::geometry {
struct MeshEdges;
}

namespace vrk::visual {

/// The edges of a shape or of a mesh as one list of segments, which is one draw call.
///
/// Owner: the parent visual, mostly the body of the same shape or mesh. Thread: render thread. It is not registered and cannot be
/// picked.
class VRK_EXPORT WireFrameVisual : public Visual {
public:
    explicit WireFrameVisual(Visual* parent);

    /// Every edge of the shape once, drawn from its own polygon or else from that of the first of its faces that has one.
    /// An edge without either is left out, as is one that is but a point of a surface. Wire frames of one
    /// shape have their points and their buffer in common.
    static WireFrameVisual* Build(Visual* parent, const TopoDS_Shape& shape);
    /// Those of one list of edges have their points and their buffer in common, too.
    static WireFrameVisual* Build(Visual* parent, const std::shared_ptr<const geometry::MeshEdges>& edges);

    /// That of the edges of bodies, in place of one that the body gave them.
    void useOwnMaterial();
    /// For a body of this colour: edges are light on one that is as dark as they are.
    void suitColor(const rob::ColorTemplate<float>& color);
    /// A segment with a coordinate that is no finite float is dropped.
    void addSegment(const gp_Pnt& a, const gp_Pnt& b);
    const DynamicLines& getLines() const { return lines; }

    void update() override;

private:
    DynamicLines lines{RenderOpType::Lines};
};

} // namespace vrk::visual
