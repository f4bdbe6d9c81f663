#pragma once

#include "edit/Change.h"

#include <vector>

namespace vrkview {

/// Other things are hidden than before. This writes the model's list alone. `ViewState` hides and shows the visuals when it
/// hears of `Touched::Visibility`, because what is seen depends on more than that list.
class HideThings : public Change {
public:
    /// @param hidden  what the model's list says from now on.
    HideThings(const QString& text, std::vector<unsigned> hidden);

    bool isNeeded() const override { return after != before; }
    void apply() override { note(after); }
    void revert() override { note(before); }

private:
    static void note(const std::vector<unsigned>& hidden);

    std::vector<unsigned> before;
    std::vector<unsigned> after;
};

} // namespace vrkview
