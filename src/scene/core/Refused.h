#pragma once

#include "scene/math/Pose.h"

#include <cmath>
#include <limits>
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

/// Numbers that no float can hold count as unbounded: what is drawn is of floats.
/// @throws std::invalid_argument "<operation> needs a pose of finite numbers"
template <typename T>
void refuseUnbounded(const rob::PoseTemplate<T>& pose, const char* operation)
{
    const auto& place = pose.position;
    const auto& turn = pose.orientation;
    for (const T number : {place.x, place.y, place.z, turn.w, turn.x, turn.y, turn.z})
        if (!(std::abs(number) <= std::numeric_limits<float>::max()))
            throw std::invalid_argument(std::string(operation) + " needs a pose of finite numbers");
}

} // namespace vrk::visual
