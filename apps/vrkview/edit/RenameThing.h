#pragma once

#include "edit/Change.h"

#include <string>

namespace vrkview {

/// An object of the model, a piece as well, gets another name.
class RenameThing : public Change {
public:
    RenameThing(unsigned thing, std::string name);

    /// An empty name would leave nothing to read in the tree.
    bool isNeeded() const override { return after != before && !after.empty(); }
    void apply() override { give(after); }
    void revert() override { give(before); }

private:
    void give(const std::string& name) const;

    unsigned thing;
    std::string before;
    std::string after;
};

} // namespace vrkview
