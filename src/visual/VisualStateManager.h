#pragma once

#include "platform/common/Export.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace vrk::visual {

class Visual;

/// What can be shown of a visual besides its plain look, as bit flags.
enum class VisualStateLayer : unsigned {
    None = 0,
    Material = 1,
    EmphasizeGroupA = 2,
    EmphasizeGroupB = 4,
    CollisionNearMiss = 8,
    CollisionContact = 16,
    Highlighted = 32,
    Selected = 64,
};

/// Resolves what a visual looks like when several things are to be shown of it at once.
///
/// Each visual has a set of layers; `refresh` shows the topmost. A change is only stored until then. There is no order in
/// which layers came: the top one is found anew each time, in the order Selected, Highlighted, CollisionContact,
/// CollisionNearMiss, EmphasizeGroupA, EmphasizeGroupB, Material. The two groups stand against their numbers.
///
/// Owner: the scene. Thread: render thread.
class VRK_EXPORT VisualStateManager {
public:
    /// @param material  kept with the layer, for `Material`; an empty text keeps what is there.
    void setLayer(Visual* visual, VisualStateLayer layer, bool on, const std::string& material);
    /// Takes the layer, and its material, from every visual that has it, and refreshes those.
    void clearLayer(VisualStateLayer layer);
    bool hasLayer(const Visual* visual, VisualStateLayer layer) const;
    /// The topmost layer of a set of flags; `None` for an empty set and for flags that are no layer.
    static VisualStateLayer pickTopLayer(unsigned mask);
    /// Shows the plain look, then the topmost layer over it.
    void refresh(Visual* visual);
    /// Refreshes the descendants that have layers of their own, from the top down: what was shown of the visual as a whole
    /// has gone over them.
    void refreshBelow(Visual* visual);
    /// Refreshes the visual and all that its look goes over. Without a layer it looks as what it is a part of.
    void refreshWithParts(Visual* visual);
    /// Forgets a visual, without a refresh.
    void remove(Visual* visual);
    /// Whether the visual has an entry: it has none before its first layer and after its last.
    bool hasEntry(const Visual* visual) const;
    /// In no order.
    std::vector<const Visual*> visualsWithLayers() const;

private:
    struct Entry {
        unsigned mask = 0;
        std::unordered_map<VisualStateLayer, std::string> materials;

        bool isEmpty() const { return mask == 0 && materials.empty(); }
    };

    std::unordered_map<const Visual*, Entry> entries;
};

} // namespace vrk::visual
