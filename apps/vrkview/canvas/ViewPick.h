#pragma once

#include "canvas/Picked.h"

#include <QObject>
#include <QPointF>

#include <array>
#include <optional>
#include <span>
#include <vector>

namespace vrkview {

class StationTree;
class ViewWidget;

/// What the user may want of a station: each can be left out of what the mouse finds.
enum class PickGroup { Bodies, Faces, Edges, Vertices, Points, Frames };

struct PickGroupName {
    PickGroup group;
    const char* name; ///< as it stands in recordings
};
std::span<const PickGroupName> allPickGroups();

/// What a gesture of the mouse aims at.
enum class PickAim {
    Thing, ///< whole things; where bodies are left out, whatever else is taken
    Face,  ///< of a solid
    Edge,  ///< of a solid
};

/// Finds what lies under the mouse, among what the user wants.
///
/// Lines, frames and points count within a few pixels, and so do edges and vertices where the aim is a piece of a thing;
/// edges within twenty where they are the aim;
/// whole bodies only where they are hit, so that a click right beside one takes what is there.
///
/// Thread: the application's, which is the render thread. Places are device pixels of the view.
class ViewPick : public QObject {
    Q_OBJECT

public:
    /// Both outlive this.
    ViewPick(const ViewWidget& view, const StationTree& tree, QObject* parent = nullptr);

    bool takes(PickGroup group) const { return taken[static_cast<std::size_t>(group)]; }
    void setTaken(PickGroup group, bool isTaken);
    /// Whether a click without keys takes pieces of things: faces, edges, points.
    bool takesPieces() const { return !takes(PickGroup::Bodies); }

    /// What a click takes; nothing where there is none, and before the view has its size. Picking is brought up to date, so
    /// that the answer is of the scene as it is.
    std::optional<Picked> at(const QPointF& place, PickAim aim) const;
    /// All that a click could mean, what it would take first, and behind it also what something lies in front of. Of what a
    /// click takes as one there is one.
    std::vector<Picked> allAt(const QPointF& place, PickAim aim) const;

signals:
    /// Another choice of groups.
    void changed();

private:
    std::optional<vrk::selection::PickQuery> queryAt(const QPointF& place, PickAim aim) const;
    vrk::selection::PickKinds kindsFor(PickAim aim) const;
    bool isSameForClick(const Picked& a, const Picked& b, PickAim aim) const;

    const ViewWidget& view;
    const StationTree& tree;
    std::array<bool, 6> taken; // by the group
};

} // namespace vrkview
