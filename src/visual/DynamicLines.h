#pragma once

#include "scene/math/Vec.h"
#include "selection/geometry/Box.h"
#include "visual/DynamicRenderable.h"

#include <limits>
#include <memory>
#include <vector>

namespace vrk::visual {

/// Points, segments or a strip through a list of points, and the vertex buffer that follows it.
///
/// Owner: the visual that makes it. Thread: render thread. Units: model units, in the frame of its node.
///
/// Editing touches only the list; `update` brings it to the GPU. There are positions and nothing else: the colour is that
/// of the material.
///
/// Lines that are alike may have list and buffer in common, see `drawAs`.
class VRK_EXPORT DynamicLines : public DynamicRenderable {
public:
    explicit DynamicLines(RenderOpType type);

    void addPoint(float x, float y, float z);
    /// Unchecked: the point must have been added.
    void setPoint(unsigned index, const rob::Vec3Template<float>& point);
    /// Forgets all points. What is drawn stays until an `update` with at least two new ones.
    void clear();
    /// Fills the buffer if a point changed. With fewer than two points nothing is done: they wait for a later call.
    void update();
    /// In place of what it drew, draws what `model`, of the same type, draws now: with that one's list and buffer, until a point
    /// of its own is changed. `model`, which lives as long, must not be edited any more.
    void drawAs(std::shared_ptr<const DynamicLines> model);

    /// The segments from this one on, counted from 0, are edges that a surface goes on across without a bend; materials of
    /// edges draw them finer.
    void drawSmoothFrom(std::size_t segment) { firstSmooth = segment; }

    /// Materials of edges draw them light, as on a dark body.
    void drawLight(bool nowLight) { light = nowLight; }
    bool isDrawnLight() const { return light; }

    const std::vector<rob::PosTemplate<float>>& getPoints() const { return model ? model->points : points; }
    /// The box of what is drawn, one unit wider on each side. OGRE's own box, by which lines are culled, only ever grows.
    const Box& getBounds() const { return bounds; }
    bool isDirty() const { return dirty; }

    /// Materials of edges ask for the sphere around what is drawn, 2, the first smooth segment, 3, and light lines, 4.
    void _updateCustomGpuParameter(const Ogre::GpuProgramParameters::AutoConstantEntry& entry,
                                   Ogre::GpuProgramParameters* parameters) const override;

protected:
    void createVertexDeclaration() override;

private:
    std::vector<rob::PosTemplate<float>>& ownPoints();
    void fillVertexBuffer();

    Box bounds;
    std::vector<rob::PosTemplate<float>> points; // where there is no model
    std::shared_ptr<const DynamicLines> model;
    std::size_t firstSmooth = std::numeric_limits<std::size_t>::max(); // where there is no model
    bool dirty = true;
    bool light = false;
};

} // namespace vrk::visual
