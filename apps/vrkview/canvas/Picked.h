#pragma once

#include "selection/pick/PickQuery.h"

#include <QString>

namespace vrk::visual {
class Visual;
}

namespace vrkview {

class StationTree;

// Of what lies under the mouse. Render thread.

/// The thing that a click takes: the part, robot, tool or device that a body, link, curve or point belongs to; other things,
/// such as clouds and frames, by themselves. 0 for what the tree does not show.
unsigned thingOf(const StationTree& tree, const vrk::visual::Visual& visual);
/// Whether a highlight is to be seen on it: a cloud has none, and would be drawn anew for nothing, which takes its time.
bool hasHighlight(const vrk::visual::Visual& thing);
/// For the user: the thing, what of it was found, and the number of the face, edge or point, or where the vertex is. Empty
/// where nothing is to be told.
QString describeForUser(const StationTree& tree, const vrk::selection::PickCandidate& found);

/// What the user gets there.
struct Picked {
    /// Good as it is until the scene changes; its numbers are, after that, too.
    vrk::selection::PickCandidate candidate;
    unsigned thing = 0; ///< see thingOf
    QString text;       ///< see describeForUser

    Picked(const StationTree& tree, const vrk::selection::PickCandidate& candidate);
    /// The number of the face of a solid, from 1; 0 for anything else.
    unsigned face() const { return numberOf(vrk::selection::PickKind::Face); }
    /// The number of the edge of a solid, from 1; 0 for anything else.
    unsigned edge() const { return numberOf(vrk::selection::PickKind::Edge); }

private:
    unsigned numberOf(vrk::selection::PickKind kind) const
    {
        return candidate.kind == kind ? static_cast<unsigned>(candidate.subId) : 0;
    }
};

} // namespace vrkview
