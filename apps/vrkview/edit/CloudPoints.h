#pragma once

#include "edit/Change.h"

#include "platform/layout/PointCloud.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace vrkview {

/// By the cloud's id: numbers of points, ascending.
using PointsOfClouds = std::map<unsigned, std::vector<std::uint32_t>>;

/// The cloud of the station with that id; null for any other. Takes the model's lock, shared.
std::shared_ptr<vrk::layout::PointCloud> cloudOf(unsigned id);
/// How many points of all clouds are hidden one by one. Takes the model's lock, shared.
std::size_t countHiddenPoints();
/// Those that are not hidden. Takes the model's lock, shared.
std::vector<std::uint32_t> shownPointsOf(unsigned cloud);

/// Other points of clouds are hidden than before.
class HidePoints : public Change {
public:
    /// These as well.
    static std::unique_ptr<HidePoints> Also(const PointsOfClouds& points);
    /// Of these clouds and all others that are given every point but these.
    /// @param shown  the clouds that the user sees.
    static std::unique_ptr<HidePoints> AllBut(const PointsOfClouds& points, const std::vector<unsigned>& shown);
    /// None of any cloud.
    static std::unique_ptr<HidePoints> None();

    bool isNeeded() const override { return before != after; }
    void apply() override { hide(after); }
    void revert() override { hide(before); }

private:
    /// What each cloud hides.
    using Sets = std::map<unsigned, vrk::layout::PointSet>;

    HidePoints(const QString& text, Sets wanted);
    static void hide(const Sets& sets);

    Sets before;
    Sets after;
};

/// Points leave their clouds and become clouds of their own, "<cloud> cut", at the same place and on the same carrier. What
/// hangs on a cloud stays there. Points that are not finite, which nobody sees, leave it as well.
class CutPoints : public Change {
public:
    /// @throws std::invalid_argument  where nothing that could be shown would be left of a cloud.
    explicit CutPoints(const PointsOfClouds& points);

    bool isNeeded() const override { return !cuts.empty(); }
    /// The new clouds.
    std::vector<unsigned> getMade() const;
    void apply() override;
    void revert() override;

private:
    struct Cut {
        std::shared_ptr<vrk::layout::PointCloud> from;
        std::shared_ptr<vrk::layout::PointCloud> made;
        vrk::layout::PointCloud::Content other; // of `from`: what is left of it, or while it is cut, all of it
    };

    std::vector<Cut> cuts;
};

/// Writes these points as they lie in the world. No change of the station.
/// @throws vrk::station::ExportError
void savePoints(const PointsOfClouds& points, const std::string& file);

} // namespace vrkview
