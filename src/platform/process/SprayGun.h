#pragma once

#include "platform/common/Export.h"
#include "scene/math/Vec.h"

#include <vector>

namespace vrk::process {

/// A gun whose paint leaves the nozzle in a round cone and flies straight. Model units, seconds, radians.
///
/// Through a plane across the cone, at a distance h from the nozzle, the paint comes as a beta distribution over the disc of
/// radius R = h tan(halfAngle) (Balkan, Arikan, "Modeling of paint flow rate flux for circular paint sprays by using
/// experimental paint thickness distribution", 1999): at the distance r from the axis
///
///     f(r) = flow * profile / (pi R^2) * (1 - r^2 / R^2)^(profile - 1)
///
/// a second, which sums up to `flow` over the disc. A surface takes of it what crosses it (as Conner, Greenberg, Atkar, Rizzi,
/// Choset, "Paint deposition modeling for trajectory planning on automotive surfaces", 2005, project it): where the paint
/// flies in the direction d, the axis is a and the surface's normal n, it grows by
///
///     f(r) * max(-d.n, 0) / d.a
///
/// a second. So whatever the surface that closes the cone, it takes the whole flow; with the distance it falls with its square,
/// and with the angle as the cosine. What lies in front of what is not looked at: paint goes through.
struct VRK_EXPORT SprayGun {
    double halfAngle = 0.26;
    double flow = 500;  ///< of paint that stays, once dry: volume a second
    double profile = 2; ///< 1 for an even disc, 2 for a parabola, more for a narrower bell; at least 1
    double reach = 500; ///< how far from the nozzle paint still comes down

    /// @throws std::invalid_argument for a half angle that is not between 0 and a quarter of a turn, a flow below 0, a profile
    ///         below 1, a reach that is not above 0, and what is not finite.
    void check() const;
    /// How much a surface's coat grows in a second, in length. Nothing outside of the cone or beyond the reach, nor on a side
    /// that turns away.
    double rateAt(const rob::Vec3d& fromNozzle, const rob::Vec3d& axis, const rob::Vec3d& normal) const;
};

/// Where a gun stands, and where it points to. The axis has unit length.
struct SprayPlace {
    rob::Posd nozzle;
    rob::Dird axis;
};

/// A way of a gun from place to place, straight between them and its axis turning evenly.
///
/// Thread: any, it does not change.
class VRK_EXPORT SprayWay {
public:
    /// @throws std::invalid_argument for no place, a speed that is not above 0 and finite, or a place that is not finite.
    /// @throws std::overflow_error "0-length vector cannot be normalized." for an axis without length.
    SprayWay(std::vector<SprayPlace> places, double speed);

    double length() const { return begins.back(); }
    double seconds() const { return length() / speed; }
    double getSpeed() const { return speed; }
    /// So far from the beginning; at the ends where that is less than nothing or beyond.
    SprayPlace at(double way) const;

private:
    std::vector<SprayPlace> places;
    std::vector<double> begins; // how far from the beginning each lies
    double speed;
};

} // namespace vrk::process
