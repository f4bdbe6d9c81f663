#pragma once

#include "visual/MeshVisual.h"

namespace vrk::visual {

/// A mesh that is part of a handle. Being selected or highlighted changes its material alone: the queue group that bodies
/// get while they are selected would take it from in front of everything.
class VRK_EXPORT HandleMeshVisual : public MeshVisual {
public:
    HandleMeshVisual(const std::string& name, Visual* parent);

    void clearHighlightOrSelect() override;
    void setSelected() override;
};

} // namespace vrk::visual
