#pragma once

#include "station/CompoundVisual.h"

namespace vrk::visual {

/// A link of a mechanism. Its looks are those of its parts and assemblies; it has no frame.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT LinkVisual : public CompoundVisual {
public:
    /// Makes and registers the link, and with `withChildren` what it is made of.
    static LinkVisual* Build(sdf::SdfNode* node, Visual* parent, bool withChildren);

protected:
    bool takesAppearance(const Visual& child) const override { return canApplyMaterial(child); }

private:
    LinkVisual(sdf::SdfNode* node, Visual* parent) : CompoundVisual(node, parent, VisualType::Link) {}
    static bool canApplyMaterial(const Visual& child);
};

} // namespace vrk::visual
