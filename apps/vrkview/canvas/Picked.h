#pragma once

#include <QString>

namespace vrk::selection {
struct Result;
}

namespace vrk::visual {
class Visual;
}

namespace vrkview {

class StationTree;

// Of what lies under the mouse. All take a result without a hit, too. Render thread.

/// The thing that a click takes: the part, robot, tool or device that a body, link, curve or point belongs to; other things,
/// such as clouds and frames, by themselves. 0 where nothing was hit that the tree shows.
unsigned thingOf(const StationTree& tree, const vrk::selection::Result& result);
/// Whether a highlight is to be seen on it: a cloud has none, and would be drawn anew for nothing, which takes its time.
bool hasHighlight(const vrk::visual::Visual& thing);
/// The face of a solid, from 1; 0 for anything else.
unsigned faceOf(const vrk::selection::Result& result);
/// The edge of a solid that lies near where its face was hit, by its number, from 1, in the shape of the solid; 0 for none.
unsigned edgeOf(const vrk::selection::Result& result);
/// For the user: the thing, what of it was hit, and the number of the face or point. Empty where nothing is to be told.
QString describeForUser(const StationTree& tree, const vrk::selection::Result& result);

} // namespace vrkview
