#pragma once

#include "station/CompoundVisual.h"
#include "visual/BodyVisual.h"

namespace vrk::layout {
class Body;
}

namespace vrk::visual {

/// A part of the station: its bodies, and a local frame that shows while the part is selected.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT PartVisual : public CompoundVisual {
public:
    /// Makes the visual of a part with all its bodies, in model order, and registers it.
    /// @throws std::bad_cast if the node is no part.
    /// @throws std::runtime_error "File format is not brep or stl", and what reading a body's file does.
    static void Build(Visual* parent, sdf::SdfNode* node);
    /// The same without bodies.
    static PartVisual* BuildBare(Visual* parent, sdf::SdfNode* node);
    /// One body under `parent`, by its file type and the kind of its shape. A body without a shape gives nothing.
    /// @throws as `Build` does, ahead of which a line in the log names the body.
    static void BuildBody(Visual* parent, layout::Body& body);
    /// What the visual of the body would show now. Under the model's lock.
    static BodySource SourceOf(const layout::Body& body);

    FrameVisual* getLocalFrame() const { return getOwnFrame(); }

protected:
    bool takesAppearance(const Visual& child) const override { return canApplyMaterial(child); }

private:
    PartVisual(sdf::SdfNode* node, Visual* parent);
    static bool canApplyMaterial(const Visual& child);
};

} // namespace vrk::visual
