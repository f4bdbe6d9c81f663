#pragma once

#include "visual/Visual.h"

namespace vrk::visual {

class FrameVisual;

/// What visuals that draw nothing themselves have in common: their looks are those of some of their children, and a frame
/// of their own comes and goes with the selection.
class VRK_EXPORT CompoundVisual : public Visual {
public:
    CompoundVisual(sdf::SdfNode* node, Visual* parent, VisualType kind);

    void resetAppearance() override;
    void setSelected() override;
    void setHighlighted() override;
    void clearHighlightOrSelect() override;

protected:
    /// Whether a child of an assembly or a link takes its looks: parts and assemblies that do not merely hang on it.
    static bool IsMember(const Visual& child);
    /// Whether this child takes part in the looks of the whole.
    virtual bool takesAppearance(const Visual& child) const = 0;
    /// Children that are selected keep that look while the whole is highlighted.
    virtual bool highlightsSelectedChildren() const { return false; }
    /// Makes the frame, hidden. `label` is its name.
    void createOwnFrame(const char* label);
    FrameVisual* getOwnFrame() const { return ownFrame; }
    /// Whether the frame shows while this visual is selected.
    virtual bool showsFrameWhenSelected() const;

private:
    void hideOwnFrame();

    FrameVisual* ownFrame = nullptr; // a child
};

} // namespace vrk::visual
