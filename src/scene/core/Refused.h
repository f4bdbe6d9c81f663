#pragma once

#include "scene/math/Pose.h"

#include <cmath>
#include <stdexcept>
#include <string>

/// What an operation refuses at the call, since nothing good can come of it later.
namespace vrk::visual {

/// @throws std::invalid_argument "<operation> needs <what>, not a null pointer"
template <typename Object>
void refuseNull(const Object* object, const char* operation, const char* what)
{
    if (!object)
        throw std::invalid_argument(std::string(operation) + " needs " + what + ", not a null pointer");
}

/// @throws std::invalid_argument "<operation> needs a pose of finite numbers"
template <typename T>
void refuseUnbounded(const rob::PoseTemplate<T>& pose, const char* operation)
{
    const auto& turn = pose.orientation;
    if (!pose.position.isFinite() || !std::isfinite(turn.w) || !std::isfinite(turn.x) || !std::isfinite(turn.y) ||
        !std::isfinite(turn.z))
        throw std::invalid_argument(std::string(operation) + " needs a pose of finite numbers");
}

} // namespace vrk::visual
