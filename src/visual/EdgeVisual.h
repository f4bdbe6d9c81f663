#pragma once

#include "visual/Visual.h"

#include <TopoDS_Edge.hxx>

#include <memory>

namespace vrk::visual {

class DynamicLines;
class MeshVisual;

/// The names of an edge's looks, in the order in which those who build edges give them.
struct EdgeMaterials {
    std::string normal;
    std::string highlighted;
    std::string selected;
};

enum class EdgeOrigin {
    Curve,     ///< drawn from a shape of the station
    Generated, ///< laid on a body later
};

/// An edge as a strip through the nodes of its stored polygon, perhaps with an arrow.
///
/// Owner: the parent visual. Thread: render thread. The location of the polygon is the pose of the visual.
class VRK_EXPORT EdgeVisual : public Visual {
public:
    EdgeVisual(unsigned id, const std::string& name, Visual* parent, const TopoDS_Edge& edge, EdgeOrigin origin);
    ~EdgeVisual() override;

    /// Named `prefix` and its id, which is a transient one; not registered. Nodes with a coordinate that is no finite
    /// float are left out.
    /// @return empty for an edge without polygon, which is not drawn: as a face comes with its triangles, an edge comes
    ///         with its polygon.
    static std::optional<EdgeVisual*> Build(Visual* parent, const std::string& prefix, const TopoDS_Edge& edge,
                                            const EdgeMaterials& materials, EdgeOrigin origin);

    /// An arrow that stands at the edge's end, if `forward`, or at its start, and points along the edge, into it. An arrow
    /// from before stays as a child.
    /// @throws std::overflow_error "0-length vector cannot be normalized." where the edge has no tangent.
    void addArrow(bool forward);
    /// Deletes the latest arrow, if there is one.
    void clearArrow();

    const TopoDS_Edge& getEdge() const { return edge; }
    const DynamicLines& getLines() const { return *lines; }
    /// The latest one; null without.
    MeshVisual* getArrow() const { return arrow; }
    /// When the line is drawn, ahead of or behind what else there is; see `renderGroup`.
    void setRenderGroup(std::uint8_t group);

    void update() override;

private:
    std::unique_ptr<DynamicLines> lines;
    TopoDS_Edge edge;
    MeshVisual* arrow = nullptr;
};

} // namespace vrk::visual
