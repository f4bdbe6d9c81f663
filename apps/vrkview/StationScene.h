#pragma once

namespace vrkview {

struct Station;

/// Enters the station in the model and posts the building of its visuals: one for each part, below it one for each body,
/// and one for each cloud and frame. Faces are not hidden yet, `showAs` does that. Render thread, after start-up; what fails while they are built leaves `Scene::processMsgs`, with the name
/// of the body.
void showStation(const Station& station);

} // namespace vrkview
