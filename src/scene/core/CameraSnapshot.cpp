#include "scene/core/CameraSnapshot.h"

#include <cmath>

namespace vrk::visual {
namespace {

rob::Posf applied(const CameraSnapshot::Matrix& m, const rob::Posf& p)
{
    const float scale = 1.0f / (m[12] * p.x + m[13] * p.y + m[14] * p.z + m[15]);
    return {(m[0] * p.x + m[1] * p.y + m[2] * p.z + m[3]) * scale,
            (m[4] * p.x + m[5] * p.y + m[6] * p.z + m[7]) * scale,
            (m[8] * p.x + m[9] * p.y + m[10] * p.z + m[11]) * scale};
}

} // namespace

Ray CameraSnapshot::rayThrough(float x, float y) const
{
    const float right = 2.0f * (x / static_cast<float>(width)) - 1.0f;
    const float up = 1.0f - 2.0f * (y / static_cast<float>(height));
    const rob::Posf start = applied(cubeToWorld, {right, up, -1});
    rob::Vec3f direction = applied(cubeToWorld, {right, up, 0}) - start;
    // Brought to unit length twice, since the camera does so: once would round otherwise than its ray.
    const float length = direction.length();
    if (length > 0)
        direction = direction * (1.0f / length);
    return {start, rob::normalized(direction)};
}

float CameraSnapshot::unitsPerPixel(float distance) const
{
    return std::tan(vfov * 0.5f) * (distance + distance) / static_cast<float>(height);
}

} // namespace vrk::visual
