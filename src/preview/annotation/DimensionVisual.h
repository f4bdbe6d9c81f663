#pragma once

#include "visual/LineVisual.h"

namespace vrk::rob {
class TPCircle;
}

namespace vrk::visual {

/// The construction lines of a measured distance, angle or circle. The number is the application's to show.
///
/// Owner: the scene's list of dimensions. Thread: render thread. Units: model units, in the frame of the parent; angles are
/// radians.
class VRK_EXPORT DimensionVisual : public LineVisual {
public:
    /// A distance: one leg.
    DimensionVisual(Visual* parent, const rob::PosTemplate<float>& a, const rob::PosTemplate<float>& b);
    /// An angle: two legs, and an arc from the shorter one, about the normal of shorter and longer, through `angle`; the
    /// other way round for one below 0, and no arc for one of exactly 0.
    /// @throws std::overflow_error "0-length vector cannot be normalized." for an arc between legs on one line; there is no
    ///         visual then.
    DimensionVisual(Visual* parent, const rob::PosTemplate<float>& apex, const rob::PosTemplate<float>& b,
                    const rob::PosTemplate<float>& c, double angle);
    /// A circle: the sweep that it stores, and one leg from its centre to the middle of that.
    DimensionVisual(Visual* parent, const rob::TPCircle& circle);

private:
    DynamicLines* addLine(RenderOpType op);
    void addLeg(const rob::PosTemplate<float>& from, const rob::PosTemplate<float>& to);
    void addRing(const rob::TPCircle& circle);
    void addArc(const rob::PosTemplate<float>& apex, const rob::Vec3Template<float>& u,
                const rob::Vec3Template<float>& v, double angle);
};

} // namespace vrk::visual
