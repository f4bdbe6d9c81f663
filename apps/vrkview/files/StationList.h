#pragma once

#include <string>

namespace vrkview {

struct Station;

/// The visuals of the scene as a JSON text: the sums, and the tree with ids, types, names and counts. Render thread, with
/// the station built.
std::string listStation(const Station& station);

} // namespace vrkview
