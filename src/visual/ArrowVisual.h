#pragma once

#include "visual/MeshVisual.h"

class TopoDS_Edge;

namespace vrk::visual {

/// Where an arrow on an edge stands, in the frame that the edge's location leads to.
struct ArrowPlace {
    rob::PosTemplate<float> position;
    rob::DirTemplate<float> direction;
};

/// An arrow of a colour of its own, or on an edge.
///
/// Owner: the parent visual. Thread: render thread. Not registered and not selectable.
class VRK_EXPORT ArrowVisual : public MeshVisual {
public:
    ArrowVisual(Visual* parent, const std::string& name);

    /// An arrow that stands at `position` and points along `direction`, which has unit length.
    /// @param color  a colour text such as "#FFA725". Throws what `geometry::ParseColorText` does.
    static ArrowVisual* Build(Visual* parent, const rob::PosTemplate<float>& position,
                              const rob::DirTemplate<float>& direction, const std::string& color);
    /// An arrow at the edge's end, if `forward`, or at its start, as the edge is oriented; it points into the edge.
    /// @throws std::overflow_error "0-length vector cannot be normalized." where the edge has no tangent.
    static ArrowVisual* Build(Visual* parent, const TopoDS_Edge& edge, bool forward);
    /// At the curve's last parameter, against its tangent, or at the first one, along it.
    /// @throws std::overflow_error "0-length vector cannot be normalized." where the curve has no tangent.
    static ArrowPlace PlaceOn(const TopoDS_Edge& edge, bool atLast);
};

} // namespace vrk::visual
