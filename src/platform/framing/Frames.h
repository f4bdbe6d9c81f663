#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"

class TopoDS_Edge;
class TopoDS_Face;

/// Frames that are defined by places that somebody points at. All of them are right-handed, of unit length and at right
/// angles, to 1e-12. Pure: any thread, no model, no window.
///
/// What is told in the coordinates of a body comes with the body's pose in the world; results are in the world.
namespace vrk::framing {

/// For a definition that goes on point by point.
/// @throws std::invalid_argument "two of the points are the same".
VRK_EXPORT void checkApart(const rob::Posd& a, const rob::Posd& b);

/// x runs from the first point to the second, y on to the third. The origin is where both meet: below the third point on the
/// line of the other two.
/// @throws std::invalid_argument "two of the points are the same", "the points lie on one line".
VRK_EXPORT rob::Posed frameFromThreePoints(const rob::Posd& onX, const rob::Posd& fartherOnX, const rob::Posd& onY);

/// x runs from the origin to the second point, y to the side of the third.
/// @throws as `frameFromThreePoints`
VRK_EXPORT rob::Posed frameFromAxes(const rob::Posd& origin, const rob::Posd& onX, const rob::Posd& sideOfY);

/// z along the normal, and x as near to the x of the world as that allows; where z itself runs along that, as near to its y.
/// @param normal  of any length.
/// @throws std::invalid_argument "the face has no normal there".
VRK_EXPORT rob::Posed frameOnNormal(const rob::Posd& place, const rob::Vec3d& normal);

/// On the outer side of the face: of a plane one in the middle of its area, of any other at the picked place of it. Directions
/// as `frameOnNormal` has them.
/// @param picked  in the world, on the face or beside it.
/// @throws std::invalid_argument "the face has no normal there", "the face has no area", "there is no face".
VRK_EXPORT rob::Posed frameOfFace(const TopoDS_Face& face, const rob::Posed& body, const rob::Posd& picked);

/// In the centre of a circle or an arc, with z along its axis: upwards in the world, of a level one towards positive y, and of
/// one along x towards positive x. The direction of x as `frameOnNormal` has it.
/// @throws std::invalid_argument "the edge is no circle".
VRK_EXPORT rob::Posed frameOfCircle(const TopoDS_Edge& edge, const rob::Posed& body);

} // namespace vrk::framing
