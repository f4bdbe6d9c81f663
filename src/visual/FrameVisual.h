#pragma once

#include "visual/LineVisual.h"

#include <array>
#include <optional>

namespace vrk::visual {

/// A coordinate frame: three lines from its origin along x, y and z, in red, green and blue.
///
/// Owner: the parent visual. Thread: render thread. Units: sizes are model units.
///
/// How long the axes are is the scene's to say, for all frames of a kind at once. Of its three looks, normal, highlighted
/// and selected, the one that was asked for last is shown. The materials must exist before the first frame is built: a
/// missing one is OGRE's ERR_ITEM_NOT_FOUND.
class VRK_EXPORT FrameVisual : public LineVisual {
public:
    /// A dashed frame. No dashes means one, and type None a plain frame.
    FrameVisual(Visual* parent, const std::string& name, VisualType type, unsigned dashes);
    /// A frame of a given id; without a name it is called "__FRAME_<id>__". Type None means a plain frame.
    FrameVisual(Visual* parent, unsigned id, const std::string& name, VisualType type);
    /// A plain frame with axes of this length.
    FrameVisual(Visual* parent, float size);
    FrameVisual(const FrameVisual& other);

    /// A plain frame that is hidden, as each object of a station has one. Its axes are made when it is first shown or asked
    /// for them: most frames never are, and axes take twice the memory of a body.
    static FrameVisual* BuildHidden(Visual* parent, const std::string& name);
    /// A dashed frame for previews, shown as selected but hidden at first. It is neither registered nor selectable.
    static FrameVisual* Build(Visual* parent, unsigned dashes);
    /// A registered frame that cannot be picked.
    static void Build(Visual* parent, unsigned id, const rob::PoseTemplate<float>& pose);
    /// The frame of a model object, registered and selectable.
    static void Build(Visual* parent, sdf::SdfNode* node);

    /// How long the axes of a new frame of this kind are; 0 for a kind that has no size.
    static unsigned SizeOf(VisualType type);
    /// Moves the end of each axis. For solid frames: of a dashed one it moves the end of the first dash.
    void setFrameSize(unsigned size);
    const std::vector<std::unique_ptr<DynamicLines>>& getLines() const override;
    void setVisible(bool visible, bool recursive) override;
    void resetAppearance() override;
    void setSelected() override;
    void setHighlighted() override;

private:
    FrameVisual(Visual* parent, sdf::SdfNode* node);
    /// One material for each axis.
    using Materials = std::array<const char*, 3>;

    FrameVisual(Visual* parent, const std::string& name, std::optional<float> laterSize);
    void buildSolid(float size);
    void makeAxes(const std::vector<float>& ends);
    void makePendingAxes();
    void setMaterials(const Materials& wanted);

    // Owned by the lines of the base
    DynamicLines* lineX = nullptr;
    DynamicLines* lineY = nullptr;
    DynamicLines* lineZ = nullptr;

    Materials materials{"RedFrameLine", "GreenFrameLine", "BlueFrameLine"};
    std::optional<float> pendingSize; // of axes that are not made yet
};

} // namespace vrk::visual
