#pragma once

#include "edit/Change.h"

#include "platform/task/EdgeMfgShape.h"

#include <memory>
#include <vector>

namespace vrkview {

/// What of a band is edited: how far along its edges it runs, and how the tool is held.
struct BandLook {
    using PathPoint = vrk::task::EdgeMfgShape::PathPoint;

    PathPoint start, end;
    bool closed = false;
    std::vector<std::vector<vrk::rob::Dird>> directions; ///< of the vectors of each edge

    static BandLook Of(const vrk::task::EdgeMfgShape& band);
    /// The vectors must be as many.
    void putOn(vrk::task::EdgeMfgShape& band) const;
    bool operator==(const BandLook&) const = default;
};

/// A band of its own, which belongs to no program and has no id in the model: to try a look on.
std::unique_ptr<vrk::task::EdgeMfgShape> draftOf(const vrk::task::EdgeMfgShape& band, const BandLook& look);

/// A band runs elsewhere along its edges, or holds the tool otherwise.
class EditBand : public Change {
public:
    /// @param text  as of Change.
    EditBand(const QString& text, unsigned band, BandLook look);

    bool isNeeded() const override { return band && before != after; }
    void apply() override { put(after); }
    void revert() override { put(before); }

private:
    void put(const BandLook& look) const;

    std::shared_ptr<vrk::task::EdgeMfgShape> band;
    BandLook before, after;
};

} // namespace vrkview
