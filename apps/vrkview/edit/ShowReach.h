#pragma once

#include "edit/Change.h"

#include <vector>

namespace vrkview {

/// How far other robots reach is shown than before. This writes the model's list alone; `RobotReaches` counts and draws
/// when it hears of `Touched::Reach`.
class ShowReach : public Change {
public:
    /// Ids of what is no robot are passed over.
    ShowReach(const std::vector<unsigned>& robots, bool shown);

    bool isNeeded() const override { return after != before; }
    void apply() override { note(after); }
    void revert() override { note(before); }

private:
    static void note(const std::vector<unsigned>& robots);

    std::vector<unsigned> before;
    std::vector<unsigned> after;
};

// Both take the model's lock shared.

/// Those of these that are robots of the station.
std::vector<unsigned> robotsOf(const std::vector<unsigned>& ids);
bool isReachShown(unsigned robot);

} // namespace vrkview
