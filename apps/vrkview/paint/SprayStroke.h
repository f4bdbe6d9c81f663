#pragma once

#include "edit/Change.h"
#include "paint/BodyCoats.h"

#include <functional>
#include <unordered_map>
#include <vector>

namespace vrkview {

/// A spray was led along a piece of its way. What it left on the bodies is kept vertex by vertex.
class SprayStroke : public Change {
public:
    /// @param coats    outlives this.
    /// @param patches  of the stroke, which was made already.
    /// @param goTo     puts the gun where it stands after and, with `from`, before it.
    /// @param gesture  strokes of one gesture, such as a run at the told speed, make one step; 0 for a step of its own.
    SprayStroke(const QString& text, BodyCoats& coats, std::vector<BodyCoats::Patch> patches, double from, double to,
                std::function<void(double)> goTo, int gesture);

    bool isNeeded() const override { return to != from; }
    void apply() override;
    void revert() override;
    int id() const override;
    bool mergeWith(const QUndoCommand* next) override;

private:
    using Places = std::unordered_map<unsigned, std::size_t>; // by vertex, in the patch

    void take(BodyCoats::Patch patch);
    void add(const BodyCoats::Patch& later, std::size_t patch);

    BodyCoats& coats;
    std::vector<BodyCoats::Patch> patches;
    std::vector<Places> places; // one for each patch; made when a second stroke meets the body
    double from, to;
    std::function<void(double)> goTo;
    int gesture;
    bool isPainted = true; // as long as it was never taken back
};

/// Paint on a body is exchanged for other: none at all, or what a map holds.
class ExchangePaint : public Change {
public:
    /// @param thickness  one for each vertex of the body's skin.
    ExchangePaint(const QString& text, BodyCoats& coats, unsigned body, std::vector<float> thickness);

    bool isNeeded() const override { return after != before; }
    void apply() override { coats.setThickness(body, after); }
    void revert() override { coats.setThickness(body, before); }

private:
    BodyCoats& coats;
    unsigned body;
    std::vector<float> before;
    std::vector<float> after;
};

} // namespace vrkview
