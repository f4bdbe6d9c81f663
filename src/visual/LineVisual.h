#pragma once

#include "scene/math/Color.h" // RenderOpType
#include "visual/Visual.h"

#include <memory>
#include <vector>

namespace vrk::visual {

class DynamicLines;

/// A visual drawn as thin lines: any number of point lists, segments and strips under one scene node.
///
/// Owner: the parent visual. A LineVisual owns the DynamicLines that it makes.
/// Thread: render thread only.
/// Units: model units, in the frame of the visual's own node. No length is converted.
///
/// Points reach the GPU in update(), which passes over a hidden visual: a hidden line is edited without an upload until
/// it is shown again.
class VRK_EXPORT LineVisual : public Visual {
public:
    LineVisual(const std::string& name, Visual* parent);
    LineVisual(sdf::SdfNode* node, Visual* parent);
    explicit LineVisual(Visual* parent);
    /// Names the same node, as a copy of any visual does; the lines stay with the one that made them.
    LineVisual(const LineVisual& other);
    LineVisual& operator=(const LineVisual&) = delete;
    ~LineVisual() override;

    /// A strip through `points` with the material "PreviewCurve". With fewer than two it draws nothing.
    static LineVisual* Build(Visual* parent, std::vector<rob::PosTemplate<float>>* points);

    /// Adds an empty line and keeps it. The result is good until the visual dies; never delete it.
    DynamicLines* createDynamicLine(RenderOpType type);
    virtual const std::vector<std::unique_ptr<DynamicLines>>& getLines() const { return lines; }

    void update() override;

private:
    std::vector<std::unique_ptr<DynamicLines>> lines; // in the order of creation
};

} // namespace vrk::visual
