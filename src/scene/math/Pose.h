#pragma once

#include "scene/math/Rotation.h"

namespace vrk::rob {

/// A frame: maps local coordinates to the parent's, `p_parent = rotation * p_local + position`. Identity by default.
/// Seven numbers: x, y, z, then w, x, y, z.
template <typename T>
struct PoseTemplate {
    PosTemplate<T> position;
    OrientTemplate<T> orientation;

    constexpr PoseTemplate() = default;
    constexpr PoseTemplate(const PosTemplate<T>& position, const OrientTemplate<T>& orientation)
        : position(position), orientation(orientation)
    {
    }
    constexpr PoseTemplate(const PosTemplate<T>& position, const RotationTemplate<T>& rotation)
        : position(position), orientation(rotation.orient())
    {
    }
    constexpr explicit PoseTemplate(const PosTemplate<T>& position) : position(position) {}
    /// Converts component by component; from double to float it narrows.
    template <typename U>
    constexpr explicit PoseTemplate(const PoseTemplate<U>& o) : position(o.position), orientation(o.orientation)
    {
    }

    constexpr RotationTemplate<T> rotation() const { return RotationTemplate<T>(orientation); }

    constexpr PoseTemplate inverse() const
    {
        const RotationTemplate<T> back = rotation().inverse();
        return {-(back * position), back};
    }
    /// This frame's parent coordinates of what `o` maps into this frame.
    constexpr PoseTemplate operator*(const PoseTemplate& o) const
    {
        return {rotation() * o.position + position, rotation() * o.rotation()};
    }
    constexpr PosTemplate<T> operator*(const PosTemplate<T>& p) const { return rotation() * p + position; }
    constexpr DirTemplate<T> operator*(const DirTemplate<T>& d) const { return rotation() * d; }
    constexpr bool operator==(const PoseTemplate&) const = default;
};

using Posef = PoseTemplate<float>;
using Posed = PoseTemplate<double>;

static_assert(sizeof(Posef) == 7 * sizeof(float));

} // namespace vrk::rob
