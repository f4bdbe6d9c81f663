#pragma once

#include "platform/measure/MeasuredThing.h"
#include "platform/measure/Measurement.h"

#include <functional>
#include <stop_token>

/// Measured values of points, CAD shapes and meshes.
///
/// Thread: any; nothing is kept between calls, and no lock is taken. Units: model units.
///
/// Values of CAD shapes are those of the kernel, lengths and areas by its adaptive integrals. A straight edge counts as its endless line, a plane face as its endless
/// plane, and a cylindrical face as its axis; what is straight or plane within 1e-7 counts as well, whatever its
/// representation. Lines and planes within 1e-6 radians of parallel are parallel.
namespace vrk::measure {

/// What is asked of one thing alone.
enum class Single {
    Place,
    Diameter, ///< of a circular edge, of a cylindrical or spherical face
    Length,   ///< along an edge
    Area,     ///< of a face, or of all faces of a body
};

/// What is asked first of a thing: where a point is, the diameter of what has one, the length of other edges, the area of
/// other shapes.
/// @throws MeasureError for what cannot be measured at all.
VRK_EXPORT Single usualFor(const MeasuredThing& thing);

/// @throws MeasureError for a thing that has no such value.
VRK_EXPORT Measurement measureOne(const MeasuredThing& thing, Single asked);

/// What two things have between them:
///
/// - The distance of points from each other, from lines and from planes, of parallel lines and planes, and of the centres
///   of two circles.
/// - The angle of lines that meet, of planes, and of a plane and a line. It opens from where they meet towards the things,
///   0 to 180 degrees, where each lies to one side of that; else it is the one of at most 90.
/// - Of lines that pass each other their shortest distance, with their angle.
/// - For anything else the minimum distance, which the note tells.
///
/// It takes as long as `minimumDistance` does where one of the two is a whole body.
/// @throws MeasureError as `minimumDistance`.
VRK_EXPORT Measurement measureBetween(const MeasuredThing& first, const MeasuredThing& second);

/// The distance of the two nearest places of the things themselves; 0 where they touch, intersect, or one lies in the other.
///
/// Of CAD shapes it is that of `BRepExtrema_DistShapeShape`. Where one of the two is a mesh, it is that of the triangles of
/// both, which the note tells, with how far those of a CAD shape may lie from its surfaces.
///
/// @param progress  told from time to time what part of the work is done, 0 to 1, on the calling thread.
/// @return empty if it was stopped. The kernel looks for that between two pairs of faces.
/// @throws MeasureError for shapes that are null, empty or endless, and for what the kernel finds no answer to.
VRK_EXPORT std::optional<Measurement> minimumDistance(const MeasuredThing& first, const MeasuredThing& second,
                                                      const std::stop_token& stop = {},
                                                      const std::function<void(double)>& progress = {});

} // namespace vrk::measure
