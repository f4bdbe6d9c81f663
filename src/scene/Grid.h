#pragma once

#include <memory>
#include <string>

namespace vrk::visual {

class ManualDrawing;
class SceneCore;
class Visual;

/// The floor: square cells of lines around the origin, in the plane across the up axis.
///
/// Owner: the scene. The grid owns its visual, which hangs under the world. Thread: render thread. Units: model units.
class Grid {
public:
    Grid(const SceneCore& core, unsigned cellCount, unsigned cellLength);
    ~Grid();

    unsigned getCellCount() const { return cellCount; }
    unsigned getCellLength() const { return cellLength; }
    /// Lays the grid across the axis: 0 for x, 1 for y, 2 for z. Any other value leaves it as it lies.
    void orient(int normalDir);
    void setVisible(bool visible);
    bool isVisible() const;

private:
    void draw();

    std::string name = "Grid";
    unsigned cellCount;
    unsigned cellLength;
    float height = 0;
    std::unique_ptr<Visual> visual;
    std::unique_ptr<ManualDrawing> lines;
};

} // namespace vrk::visual
