#pragma once

#include "edit/Change.h"

#include <memory>
#include <vector>

namespace vrkview {

/// Several changes that the user makes, and takes back, as one.
class Changes : public Change {
public:
    using Change::Change;

    bool isNeeded() const override { return !steps.empty(); }
    /// All of them in order, or none.
    void apply() override;
    /// The last one first.
    void revert() override;

protected:
    /// Appends one, unless it would change nothing.
    void add(std::unique_ptr<Change> step);
    /// Applies one at once and appends it: for steps that can only be made when those before them are done.
    void applyAndAdd(std::unique_ptr<Change> step);

private:
    std::vector<std::unique_ptr<Change>> steps;
};

} // namespace vrkview
