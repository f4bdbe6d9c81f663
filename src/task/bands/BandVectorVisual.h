#pragma once

#include "platform/task/EdgeMfgShape.h"
#include "visual/LineVisual.h"

#include <TopoDS_Edge.hxx>

#include <optional>

namespace vrk::visual {

/// A single tool direction of a band, as a short line away from its edge.
///
/// Its colours are custom parameter 0 of its lines; the materials give the width. Neither registered nor attached to the
/// model.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT BandVectorVisual : public LineVisual {
public:
    using PathPoint = task::EdgeMfgShape::PathPoint;

    /// A loose vector, which cannot be picked.
    /// @throws std::overflow_error "0-length vector cannot be normalized." for a vector without a direction.
    BandVectorVisual(Visual* parent, const TopoDS_Edge& edge, const geometry::MfgVector& vector);
    /// A vector at a place of a run, which can be picked.
    BandVectorVisual(Visual* parent, const TopoDS_Edge& edge, const geometry::MfgVector& vector, PathPoint point);
    /// Leaves the selection, and is forgotten by the band that it hangs under.
    ~BandVectorVisual() override;

    /// Empty for a loose vector.
    std::optional<PathPoint> getPathPoint() const { return pathPoint; }
    const TopoDS_Edge& getEdge() const { return edge; }
    /// Of the edge's curve.
    double getParameter() const { return parameter; }

    void resetAppearance() override;
    void setSelected() override;
    void setHighlighted() override;

private:
    void addLine(const rob::PosTemplate<double>& a, const rob::PosTemplate<double>& b);
    void setColor(const rob::ColorTemplate<float>& color);

    std::optional<PathPoint> pathPoint;
    TopoDS_Edge edge;
    double parameter;
};

} // namespace vrk::visual
