#pragma once

#include "platform/common/Export.h"

namespace vrk::visual {

/// Draws a frame: every target that is shown and active once, and raises `frameTicked`. What was posted is not run: call
/// `Scene::processMsgs` ahead of it. `WindowTarget::draw` draws one window and nothing else. Thread: render thread.
/// @throws std::logic_error "The library has not been started."
VRK_EXPORT void renderFrame();

} // namespace vrk::visual
