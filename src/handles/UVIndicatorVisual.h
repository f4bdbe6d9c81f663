#pragma once

#include "visual/Visual.h"

class TopoDS_Face;

namespace vrk::visual {

class MeshVisual;

/// Two arrows on a face, lettered U and V: the directions in which a pattern is laid on it.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT UVIndicatorVisual : public Visual {
public:
    UVIndicatorVisual(const std::string& name, Visual* parent);

    /// Moves to the middle of a face's parameters, and is shown: x along U, y as near to V as it may lie at right angles to
    /// it. The face must have a surface; its coordinates are those of the parent.
    /// @throws std::overflow_error "0-length vector cannot be normalized." where U and V do not span a plane; nothing has
    ///         moved then.
    void show(const TopoDS_Face& face);
    /// The one that the scene shows; null before it has shown any.
    static UVIndicatorVisual* Get();
    /// Scales it, so that its arrows have this length: told sizes are some pixels on a large face. Model units, above 0.
    void setLength(float length);
    MeshVisual* getMesh() const { return mesh; }

private:
    MeshVisual* mesh;
};

} // namespace vrk::visual
