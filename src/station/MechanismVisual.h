#pragma once

#include "station/CompoundVisual.h"

#include <functional>

namespace sdf {
class SdfObject;
}

namespace vrk::visual {

/// A mechanism: its links, bare visuals for its plain children, and a base frame that shows while it is selected. All
/// children take its looks.
class VRK_EXPORT MechanismVisual : public CompoundVisual {
public:
    FrameVisual* getBaseFrame() const { return getOwnFrame(); }

protected:
    /// @throws std::bad_cast if the node is no mechanism.
    MechanismVisual(sdf::SdfNode* node, Visual* parent, bool withChildren, VisualType kind);
    /// Runs the build of a mechanism. Half of one is of no use: if a link, a part or a frame fails, nothing of it stays.
    static void BuildWhole(const sdf::SdfObject& mechanism, const std::function<void()>& build);

    bool takesAppearance(const Visual&) const override { return true; }
    bool highlightsSelectedChildren() const override { return true; }
    bool showsFrameWhenSelected() const override { return true; }
};

} // namespace vrk::visual
