#pragma once

namespace vrkview {

struct Station;

/// Enters the station's parts in the model and posts the building of their visuals: one for each part, below it one for
/// each body. Render thread, after start-up; what fails while they are built leaves `Scene::processMsgs`, with the name
/// of the body.
void showStation(const Station& station);

} // namespace vrkview
