#pragma once

namespace vrkview {

struct Station;

/// Enters the station in the model and posts the building of its visuals. Faces are not hidden yet, `showAs` does that.
/// The visuals of links follow the joints from now on. Render thread, after start-up; where visuals cannot be built,
/// `Scene::processMsgs` throws the cause.
void showStation(const Station& station);

/// Adds what the files brought to the station that is shown, or, where there is a station file among them, puts that in its
/// place. All or nothing: what cannot be built is taken out again. Render thread; before start-up it is only the model's.
/// @throws std::exception as `Scene::processMsgs`; the station is as before then.
void addToStation(const Station& station);
/// Takes out again what `addToStation` added, a whole station excepted. Render thread.
void takeFromStation(const Station& station);

/// Posts the building of the visuals of an object of the model that stands by itself, where its owner has its visual.
void addToScene(unsigned id);
/// Posts their removal, with all that hangs on them. An unknown id is passed over.
void removeFromScene(unsigned id);

} // namespace vrkview
