#pragma once

#include "platform/common/Export.h"

#include <functional>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace vrk::visual {

class Visual;

/// The visuals by id. It only indexes: a visual belongs to its parent in the tree.
///
/// Thread: render thread. Others may look up while the application knows that the station is not being changed, and
/// may ask to be told of deletions at any time.
class VRK_EXPORT VisualRegistry {
public:
    /// @throws std::out_of_range "invalid unordered_map<K, T> key" for an unknown id.
    Visual* get(unsigned id) const;
    bool has(unsigned id) const { return visuals.contains(id); }
    /// Enters a visual under its id, in place of one that had it.
    template <typename AnyVisual>
    void enter(AnyVisual* visual) // a template, since this floor does not know what a visual is
    {
        enter(visual->getId(), visual);
    }
    void enter(unsigned id, Visual* visual);
    /// Forgets the id if it stands for this visual; a younger one that took over the id stays.
    void erase(unsigned id, const Visual* visual);
    const std::unordered_map<unsigned, Visual*>& all() const { return visuals; }

    /// Calls `told` for each visual that is about to be deleted through `Visual::Delete`, while it is still whole. For
    /// code that keeps pointers to visuals that it does not own.
    void whenDeleted(std::function<void(Visual*)> told);
    void tellDeleted(Visual* visual) const;

private:
    using Listeners = std::vector<std::function<void(Visual*)>>;

    std::unordered_map<unsigned, Visual*> visuals;
    mutable std::mutex mutex;                                                   // of the pointer below
    std::shared_ptr<const Listeners> listeners = std::make_shared<Listeners>(); // never changed, but replaced
};

} // namespace vrk::visual
