#pragma once

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace vrk::visual {

/// The ids of the visuals that are selected, in the order of selection; an id may stand in it several times.
///
/// Thread: any, but for `live`. The render thread writes it while others ask whether what they highlight is selected.
class SelectedIds {
public:
    void add(unsigned id)
    {
        const std::lock_guard lock(mutex);
        ids.push_back(id);
    }
    void addOnce(unsigned id)
    {
        const std::lock_guard lock(mutex);
        if (std::find(ids.begin(), ids.end(), id) == ids.end())
            ids.push_back(id);
    }
    bool contains(unsigned id) const
    {
        const std::lock_guard lock(mutex);
        return std::find(ids.begin(), ids.end(), id) != ids.end();
    }
    std::vector<unsigned> copy() const
    {
        const std::lock_guard lock(mutex);
        return ids;
    }
    void clear()
    {
        const std::lock_guard lock(mutex);
        ids.clear();
    }
    /// Removes the ids that pass the test, and returns them.
    template <typename Test>
    std::vector<unsigned> remove(const Test& test)
    {
        const std::lock_guard lock(mutex);
        const auto first = std::stable_partition(ids.begin(), ids.end(), [&](unsigned id) { return !test(id); });
        std::vector<unsigned> removed(first, ids.end());
        ids.erase(first, ids.end());
        return removed;
    }
    /// Not guarded: for the render thread, or for anybody while it is idle.
    const std::vector<unsigned>& live() const { return ids; }

private:
    mutable std::mutex mutex;
    std::vector<unsigned> ids;
};

} // namespace vrk::visual
