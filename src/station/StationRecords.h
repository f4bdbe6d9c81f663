#pragma once

#include <unordered_map>
#include <unordered_set>

namespace vrk::layout {
struct StationContent;
}

/// What the scene remembers of how the model was when it was shown. Render thread.
namespace vrk::visual {

/// What was hidden in the model when the view was last brought to its state.
struct HiddenThings {
    std::unordered_set<unsigned> ids;
};

/// The components that have built what is seen of them, each with whether that was registered under their own id.
struct BuiltComponents {
    std::unordered_map<unsigned, bool> registered;
};

/// The ids of what is hidden in a station; the members of a hidden group in place of the group. Under the model's lock.
std::unordered_set<unsigned> hiddenThingsOf(const layout::StationContent& station);

} // namespace vrk::visual
