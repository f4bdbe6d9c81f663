#pragma once

#include "visual/Visual.h"

#include <cstdint>

namespace vrk::visual {

/// What of a body of the model its visual shows, each as a hash: a change there is known by another one.
struct BodySource {
    std::uint64_t geometry = 0; ///< and what the visual is made with: its material, whether it can be picked
    std::uint64_t colors = 0;

    bool operator==(const BodySource&) const = default;
};

/// A visual of geometry. Its frames labelled "Local Frame" keep their own state when it is shown or hidden.
class VRK_EXPORT BodyVisual : public Visual {
public:
    explicit BodyVisual(Visual* parent) : Visual(parent) {}
    BodyVisual(const std::string& name, Visual* parent) : Visual(name, parent) {}
    BodyVisual(sdf::SdfNode* node, Visual* parent) : Visual(node, parent) {}
    BodyVisual(const BodyVisual&) = default;

    void setVisible(bool visible, bool recursive) override;

    /// Zeros for one that stands for no body of the model.
    const BodySource& getSource() const { return source; }
    void setSource(const BodySource& newSource) { source = newSource; }

private:
    BodySource source;
};

} // namespace vrk::visual
