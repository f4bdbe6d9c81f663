#pragma once

#include "visual/Visual.h"

namespace vrk::visual {

/// A visual of geometry. Its frames labelled "Local Frame" keep their own state when it is shown or hidden.
class VRK_EXPORT BodyVisual : public Visual {
public:
    explicit BodyVisual(Visual* parent) : Visual(parent) {}
    BodyVisual(const std::string& name, Visual* parent) : Visual(name, parent) {}
    BodyVisual(sdf::SdfNode* node, Visual* parent) : Visual(node, parent) {}
    BodyVisual(const BodyVisual&) = default;

    void setVisible(bool visible, bool recursive) override;
};

} // namespace vrk::visual
