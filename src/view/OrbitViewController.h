#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"
#include "view/ViewBounds.h"

#include <optional>
#include <string>

namespace vrk::visual {

class Camera;

/// Turns mouse moves into camera moves about a focal point: the thing under the mouse, else a place that is taken from
/// the ground plane. How far a pan or a zoom goes follows from the distance to that point.
///
/// While a pivot is set, it is the focal point of every gesture.
///
/// Without bounds, as at first, a gesture may lead anywhere: a pan goes with the distance to the ground under the mouse, which
/// near the horizon is far away. Within bounds the same gestures end where these do, and are unchanged before that.
///
/// The camera's rays come from its window: without one, or while that has no area, a gesture that needs a ray does
/// nothing. Picking answers only after `VisualSelection::update`; until then there is nothing under the mouse.
///
/// Owner: the camera, whose operations of the same names post these. Thread: render thread.
/// Units: pixels from the top left corner, model units.
class VRK_EXPORT OrbitViewController {
public:
    OrbitViewController(Camera* camera, const std::string& name);

    /// Settles what an orbit turns about: the thing under the mouse, else the ground there if the ray looks clearly down,
    /// else a place 100 units ahead. A pivot stays.
    void startRotating(float x, float y);
    /// Turns the camera about the focal point and its own axes, 0.004 radians a pixel; the focal point stays where it is
    /// in the picture. Raises `updateScene`.
    void rotateScene(float dx, float dy);
    /// Moves the camera across its view, so that what is under the mouse follows it. The speed is that of 10 units where
    /// the focal point is nearer.
    void translateScene(float x, float y, float dx, float dy);
    /// One notch towards the focal point for a positive `delta`, away from it otherwise: 16 percent of the distance, at
    /// most `zoomStepLimit`. A camera that would come nearer than `zoomMinDistance` stays where it is before a surface,
    /// and stops at that distance where there is none.
    /// @param ignored  is not read.
    /// @throws std::overflow_error "0-length vector cannot be normalized." with the camera on the focal point.
    void zoom(float x, float y, float ignored, float delta);

    void setOrbitPivot(const rob::PoseTemplate<float>& pose);
    /// The frame and the focal point stay as they are.
    void clearOrbitPivot() { hasPivot = false; }
    /// Of what is shown when a gesture begins, or none: focal points that are not a pivot lie in the cube, the camera goes where
    /// the bounds let it, and a zoom from the focal point itself does nothing.
    void setBounds(const std::optional<ViewBounds>& wanted) { bounds = wanted; }
    bool hasOrbitPivot() const { return hasPivot; }
    const rob::PoseTemplate<float>& getOrbitPivotFrame() const { return orbitPivotFrame; }
    const rob::PosTemplate<float>& getFocalPoint() const { return focalPoint; }

    /// A frame on the surface under the mouse of the main camera, with z along the normal of a solid's face. On a mesh,
    /// and where a face has no normal, it is turned as the world.
    /// @return false, with `out` unchanged, where there is neither a face nor a mesh.
    static bool PickSurfaceFrame(float x, float y, rob::PoseTemplate<float>& out);

private:
    bool pickFocalPoint(float x, float y, rob::PosTemplate<float>& out, bool* onSurface) const;
    bool hasRays() const;
    void orbit(float horizontal, float vertical);
    void holdFocalPoint();
    rob::PoseTemplate<float> held(const rob::PoseTemplate<float>& wanted) const;

    Camera* camera;
    float zoomStepLimit;
    float zoomMinDistance;
    float orbitReserved; // kept for the application's settings; nothing reads it
    rob::PosTemplate<float> focalPoint;
    rob::PoseTemplate<float> orbitPivotFrame;
    bool hasPivot = false;
    std::optional<ViewBounds> bounds;
};

} // namespace vrk::visual
