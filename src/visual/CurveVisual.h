#pragma once

#include "visual/BodyVisual.h"

#include <TopoDS_Shape.hxx>

#include <vector>

class TopoDS_Edge;

namespace vrk::visual {

class EdgeVisual;

/// A wire or an edge of the station, one child visual for each edge that has a polygon.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT CurveVisual : public BodyVisual {
public:
    CurveVisual(sdf::SdfNode* node, const TopoDS_Shape& shape, Visual* parent);
    CurveVisual(const std::string& name, const TopoDS_Shape& shape, Visual* parent);

    /// A curve of the station, registered and selectable; its edges are named after its "geometry/uri".
    /// @throws Standard_TypeMismatch "TopoDS::Wire" for a shape that is neither an edge nor a wire; the visual stays.
    static void Build(Visual* parent, sdf::SdfNode* node, const TopoDS_Shape& shape);
    /// One edge, selectable but not registered.
    /// @throws Standard_TypeMismatch "TopoDS::Edge" for another shape; the visual stays.
    static void Build(Visual* parent, const TopoDS_Shape& shape);

    /// An arrow on the last edge, if `forward`, or on the first. An earlier one stays.
    void addArrow(bool forward);
    void clearArrow();
    const TopoDS_Shape& getShape() const { return shape; }
    /// Whether the arrow that was added last points backwards from the end.
    bool isArrowForward() const { return arrowForward; }

    void resetAppearance() override;
    void setSelected() override;
    void setHighlighted() override;

private:
    void addEdge(const std::string& prefix, const TopoDS_Edge& edge);
    void dropDeletedEdges();

    TopoDS_Shape shape;
    bool arrowForward = false;
    // In the order of the wire. Not read from the tree: an edge that is highlighted for a moment is a child too, and an
    // arrow on it would go with it.
    std::vector<EdgeVisual*> edges;
};

} // namespace vrk::visual
