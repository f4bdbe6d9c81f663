#pragma once

#include "selection/pick/PickCamera.h"
#include "selection/pick/PickMatrix.h"

namespace vrk::selection {

/// Where a radius in pixels around a ray reaches: at a distance along the ray, no place that is nearer in pixels lies
/// farther from the ray than `at(distance)`.
struct PickBeam {
    double start = 0;  ///< model units, at the near plane
    double growth = 0; ///< for each unit along the ray

    double at(double distance) const { return start + growth * (distance > 0 ? distance : 0); }
};

/// A camera made ready for one pick: the ways between the world and its pixels.
class PickLens {
public:
    /// @throws as PickCamera::rayThrough.
    explicit PickLens(const PickCamera& camera);

    PickRay rayThrough(double x, double y) const;
    /// The beam of so many device pixels around a pixel.
    PickBeam beamThrough(double x, double y, double radius) const;
    const PickMatrix& getWorldToClip() const { return worldToClip; }
    /// In device pixels from the top left corner. The point must lie beyond the near plane.
    rob::Vec2Template<double> pixelOf(const ClipPoint& p) const
    {
        return {(p.x / p.w + 1) / 2 * camera.width, (1 - p.y / p.w) / 2 * camera.height};
    }
    /// The size in the world of a device pixel at a place.
    double unitsPerPixel(const rob::Posd& place) const;

private:
    /// In the camera's own coordinates: where a ray starts, and which way it goes in unit length.
    struct EyeRay {
        rob::Vec3d start, direction;
    };

    EyeRay eyeRayThrough(double x, double y) const;

    PickCamera camera;
    PickMatrix worldToClip;
    // One after the other: they differ in size by the distance of the camera, and the inverse of their product would have
    // fewer digits.
    PickMatrix clipToEye;
    PickMatrix eyeToWorld;
};

} // namespace vrk::selection
