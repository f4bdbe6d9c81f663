#pragma once

#include "platform/kinematics/ArmChain.h"

#include <functional>
#include <optional>
#include <stop_token>
#include <vector>

namespace vrk::kinematics {

/// How far an arm reaches with the middle of its wrist: the border of all the places where that can be while the first joint
/// stands still, and how far that turns.
///
/// The border lies a little outside of what is reached, never inside: by at most `margin`.
struct Reach {
    /// In the plane of the arm, with one normal for each point, outwards in that plane. A closed curve ends with its first
    /// point; one that is not closed begins and ends on the axis.
    struct Curve {
        std::vector<rob::Posd> points;
        std::vector<rob::Dird> normals;
    };

    /// Of the axis of the first joint, which is its z, relative to the mechanism; identity where that is the mechanism's own.
    /// All else is told in this frame.
    rob::Posed base;
    std::vector<Curve> curves; ///< the longest first; others are borders of holes, or of places apart
    double from = 0;           ///< radians about z
    double to = 0;
    double margin = 0; ///< model units
};

/// Thread: any; it starts none. A fifth of a second for an arm of six axes. One whose wrist leaves the plane of the arm, of
/// seven axes or of axes that do not meet, takes seconds, and its margin is three times as wide.
///
/// Where the first joint makes less than a whole turn and what follows it does not move in one plane, the two ends of the
/// turn are told too far out: by what the wrist goes aside.
///
/// @param progress  told from time to time what part of the work is done, 0 to 1.
/// @return empty if it was stopped.
/// @throws std::invalid_argument "no joint moves the wrist of the arm", "a joint of the arm follows another one",
///         "the first joint of the arm slides: its reach is no surface that turns",
///         "the wrist of the arm does not leave the axis of its first joint".
VRK_EXPORT std::optional<Reach> computeReach(const ArmChain& chain, const std::stop_token& stop = {},
                                             const std::function<void(double)>& progress = {});

} // namespace vrk::kinematics
