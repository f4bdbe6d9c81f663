#pragma once

#include "scene/math/Vec.h"
#include "selection/geometry/Box.h"
#include "selection/geometry/Ray.h"

#include <embree3/rtcore.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <span>
#include <type_traits>

namespace vrk::bench {

/// A hierarchy of Embree 3's: about as fast as the machine can be, and so the measure of ours.
class EmbreeScene {
public:
    static constexpr unsigned none = RTC_INVALID_GEOMETRY_ID;

    struct Hit {
        unsigned instance = none; ///< the scene of an instance
        unsigned triangle = none;
        float distance = std::numeric_limits<float>::infinity();
    };

    /// @param threads  those that build it. One device for each number lives until the end.
    explicit EmbreeScene(unsigned threads);

    /// The arrays are used where they are, and the vertices must be readable for four bytes past their end.
    void addTriangles(std::span<const rob::Posf> vertices, std::span<const unsigned> indices);
    /// @param toWorld  12 numbers, column by column.
    void addInstance(const EmbreeScene& scene, const float* toWorld);
    /// Boxes without anything in them. The array is used where it is.
    void addBoxes(std::span<const visual::Box> boxes);
    /// Makes the hierarchy, of medium quality.
    void build();

    Hit nearest(const visual::Ray& ray) const;

    /// What the device of this number of threads holds, as it counts itself.
    static std::size_t bytesHeld(unsigned threads);

private:
    void attach(RTCGeometry geometry);

    RTCDevice device;
    std::unique_ptr<std::remove_pointer_t<RTCScene>, void (*)(RTCScene)> scene;
};

} // namespace vrk::bench
