#pragma once

#include "scene/math/Rotation.h"

namespace vrk::visual {

/// The turn from z up, in which directions are told, to the axis that is up: 0 for x, 1 for y; z, and any other value,
/// leave them as they are.
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
