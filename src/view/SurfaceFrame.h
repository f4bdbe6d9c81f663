#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"

namespace vrk::selection {
struct Result;
}

namespace vrk::visual {

/// A frame where a pick hit a surface, its z axis along the normal. On a mesh, and where a face has no normal, it is
/// turned as the world. Render thread.
///
/// @return false, with `out` unchanged, if the pick hit neither a face nor a mesh.
VRK_EXPORT bool surfaceFrame(const selection::Result& pick, rob::PoseTemplate<float>& out);

/// The frame of a surface of this normal: x as near to the world's x axis as it may lie, or to its y axis where the normal
/// is along x.
VRK_EXPORT rob::RotationTemplate<float> frameOfNormal(const rob::DirTemplate<float>& normal);

} // namespace vrk::visual
