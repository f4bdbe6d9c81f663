#pragma once

#include "scene/core/SceneCore.h"
#include "visual/Visual.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace vrk::visual {

/// Visuals that a family of the scene's operations made and ends, in the order in which they came. One that dies before, with
/// what it hangs on, is forgotten.
///
/// Part of a record of the scene, which lives as long as that. Thread: render thread.
class VisualList {
public:
    explicit VisualList(SceneCore& core)
    {
        core.visuals.whenDeleted([this](const Visual* dying) { forget(dying); });
    }
    VisualList(const VisualList&) = delete;
    VisualList& operator=(const VisualList&) = delete;

    const std::vector<Visual*>& all() const { return visuals; }
    void add(Visual* visual)
    {
        visuals.push_back(visual);
        known.insert(visual);
    }
    /// Deletes the first one of this id; nothing where there is none.
    void deleteFirst(unsigned id)
    {
        const auto found = std::ranges::find(visuals, id, &Visual::getId);
        if (found != visuals.end())
            Visual::Delete(*found);
    }
    void deleteAll()
    {
        // From the last one, so that none has to move up; and one by one, since it may take others along.
        while (!visuals.empty()) {
            Visual* last = visuals.back();
            visuals.pop_back();
            known.erase(last);
            Visual::Delete(last);
        }
    }

private:
    void forget(const Visual* dying)
    {
        // Every visual of the scene is asked after when it dies, and hardly one of them stands here.
        if (known.erase(dying) != 0)
            std::erase(visuals, dying);
    }

    std::vector<Visual*> visuals;
    std::unordered_set<const Visual*> known;
};

} // namespace vrk::visual
