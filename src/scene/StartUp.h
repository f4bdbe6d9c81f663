#pragma once

#include "platform/common/Export.h"
#include "scene/core/SceneSettings.h"

#include <string>

namespace vrk::visual {

/// Settings for a cell of a few metres in millimetres, z up, seen from the front, right and above, with all of a robot program
/// drawn. Change what you need.
VRK_EXPORT SceneSettings DefaultSettings();

/// Makes sure that the resource zip can be read whole and holds every program that its material scripts name. It needs no start: an
/// application asks ahead of work that would be for nothing. Any thread.
/// @throws std::runtime_error naming the zip and the cause.
VRK_EXPORT void CheckResources();

/// Brings the library up, its picking too, for an application that has more to offer than the view: what stands in the way is told,
/// and the process goes on. Once the cause is gone it may be called again.
///
/// It does what `selection::Init`, unless that was called, and `Init` do, and hides the window that carries the graphics context.
/// On the thread that renders from then on.
/// @param width   of that window, from 1 to 16384 pixels, as `height`; nobody sees it.
/// @param why     one line with the cause: no display, a driver that is too old, resources that are missing or damaged (with their
///                path), settings that show nothing, a second start. Untouched where it succeeds.
/// @return whether the library is up. Where it fails after the scene was begun, which no known cause leads to, it cannot be
///         started in this process any more, and every further call says so.
[[nodiscard]] VRK_EXPORT bool TryInit(int width, int height, const SceneSettings& settings, std::string& why);

} // namespace vrk::visual
