#pragma once

#include "scene/math/Color.h"
#include "visual/Visual.h"

#include <memory>

namespace vrk::visual {

class ManualDrawing;

/// One point, drawn after the bodies as a round mark of a few pixels.
///
/// Owner: the parent visual. Thread: render thread. Units: model units, in the frame of the visual's own node.
class VRK_EXPORT PointVisual : public Visual {
public:
    ~PointVisual() override;

    /// A preview point, amber, under the visual of that id; not registered.
    /// @throws std::out_of_range "invalid unordered_map<K, T> key" for an unknown id other than 0.
    static PointVisual* Build(unsigned parentId, double x, double y, double z);
    static Visual* Build(Visual* parent, rob::PosTemplate<float> position);
    /// A point of the station: its id is registered, and it can be picked.
    static Visual* Build(Visual* parent, sdf::SdfNode* node, rob::PosTemplate<float> position);

    // The state's colour goes with its material
    void resetAppearance() override;
    void setSelected() override;
    void setHighlighted() override;

    rob::PosTemplate<float> getPntPos() const { return position; }
    void setColor(const rob::ColorTemplate<float>& color, float alpha);

protected:
    void useMaterial(const std::string& name) override;

private:
    PointVisual(Visual* parent, rob::PosTemplate<float> position);
    PointVisual(Visual* parent, sdf::SdfNode* node, rob::PosTemplate<float> position);

    std::unique_ptr<ManualDrawing> drawing;
    rob::PosTemplate<float> position;
};

} // namespace vrk::visual
