#include "visual/VisualWatch.h"

#include "scene/core/SceneCore.h"

#include <unordered_set>

namespace vrk::visual {

struct VisualWatch::State {
    /// All that watch, as a record of the scene: it is told of each death for good, and those who ask come and go.
    struct All {
        explicit All(SceneCore& core)
        {
            core.visuals.whenDeleted([this](const Visual* dying) {
                for (State* watch : watches)
                    watch->hasDied = watch->living.erase(dying) > 0 || watch->hasDied;
            });
        }

        std::unordered_set<State*> watches;
    };

    State() : all(SceneCore::Get()->record<All>()) { all.watches.insert(this); }
    ~State() { all.watches.erase(this); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    All& all;
    std::unordered_set<const Visual*> living;
    bool hasDied = false;
};

VisualWatch::VisualWatch() = default;
VisualWatch::~VisualWatch() = default;

void VisualWatch::add(const Visual* visual)
{
    if (!state)
        state = std::make_unique<State>();
    state->living.insert(visual);
}

bool VisualWatch::hasAnyDied() const
{
    return state && state->hasDied;
}

void VisualWatch::clear()
{
    state.reset();
}

} // namespace vrk::visual
