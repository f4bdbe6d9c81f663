#pragma once

#include "visual/Visual.h"

#include <memory>

namespace vrk::visual {

class DynamicLines;
class MeshVisual;

/// The axis of a joint that is being defined: a line with an arrow at its end. At first it lies along x, 1000 units each way.
///
/// Owner: the scene, which keeps one. Thread: render thread. Units: model units.
class VRK_EXPORT PreviewedJointVisual : public Visual {
public:
    explicit PreviewedJointVisual(Visual* parent);
    ~PreviewedJointVisual() override;

    /// Puts the line between two points of this visual's frame, and the arrow at the second, along it.
    /// @throws std::overflow_error "0-length vector cannot be normalized." for equal points; the line has them then, and the
    ///         arrow stays where it was.
    void set(const rob::PosTemplate<float>& from, const rob::PosTemplate<float>& to);
    const DynamicLines& getLine() const { return *line; }
    MeshVisual* getArrow() const { return arrow; }

private:
    std::unique_ptr<DynamicLines> line;
    MeshVisual* arrow;
};

} // namespace vrk::visual
