#pragma once

#include "station/CompoundVisual.h"

namespace vrk::visual {

/// An assembly of parts and assemblies, with a local frame that shows while the assembly is selected.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT AssemblyVisual : public CompoundVisual {
public:
    /// Makes the visual of an assembly with all its members, and registers them.
    /// @throws std::bad_cast if the node, or a member, is of a wrong kind; what `PartVisual::Build` does.
    static void Build(Visual* parent, sdf::SdfNode* node);

    /// The same without members.
    static AssemblyVisual* BuildBare(Visual* parent, sdf::SdfNode* node);

    FrameVisual* getLocalFrame() const { return getOwnFrame(); }

protected:
    bool takesAppearance(const Visual& child) const override { return CanApplyMaterial(child); }

private:
    AssemblyVisual(sdf::SdfNode* node, Visual* parent);
    static bool CanApplyMaterial(const Visual& child) { return IsMember(child); }
};

} // namespace vrk::visual
