#pragma once

#include "station/CompoundVisual.h"

namespace vrk::visual {

/// A mechanism: its links, bare visuals for its plain children, and a base frame that shows while it is selected. All
/// children take its looks.
class VRK_EXPORT MechanismVisual : public CompoundVisual {
public:
    FrameVisual* getBaseFrame() const { return getOwnFrame(); }

protected:
    /// @throws std::bad_cast if the node is no mechanism.
    MechanismVisual(sdf::SdfNode* node, Visual* parent, bool withChildren, VisualType kind);

    bool takesAppearance(const Visual&) const override { return true; }
    bool highlightsSelectedChildren() const override { return true; }
    bool showsFrameWhenSelected() const override { return true; }
};

} // namespace vrk::visual
