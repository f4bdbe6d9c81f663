#pragma once

#include "scene/math/Rotation.h"

namespace vrk::visual {

/// Directions are written for a world in which z points up. This is the rotation that takes them to a world in which
/// another axis does: 0 for x, 1 for y. For 2, z, and for any other value it is the identity.
inline rob::RotationTemplate<float> upAxisTurn(int gridNormalDir)
{
    switch (gridNormalDir) {
    case 0:
        return {0.5f, 0.5f, 0.5f, 0.5f};
    case 1:
        return {-0.5f, 0.5f, 0.5f, 0.5f};
    default:
        return {};
    }
}

} // namespace vrk::visual
