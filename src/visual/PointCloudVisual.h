#pragma once

#include "scene/math/Color.h"
#include "selection/geometry/Box.h"
#include "visual/Visual.h"

#include <memory>
#include <unordered_set>
#include <vector>

namespace vrk::visual {

class ManualDrawing;

/// A scanned cloud, coloured by height within its bounding box, and lit where it has normals. A subset of its points can
/// be selected, and the others hidden.
///
/// The points stay the station's: the cloud's node must outlive the visual, or be removed after it. A point that is not
/// finite, or farther out than any station reaches, is not drawn.
///
/// A change of selection costs a rebuild of all that is drawn. Any change of the visual's own look, its highlight for
/// one, empties the selection of points.
///
/// Owner: the parent visual. Thread: render thread; others may read getPoints() while the station is not changed.
/// Units: model units, in the frame of the visual's own node.
class VRK_EXPORT PointCloudVisual : public Visual {
public:
    /// @param node  a `layout::PointCloud`.
    PointCloudVisual(Visual* parent, sdf::SdfNode* node);
    ~PointCloudVisual() override;

    /// Makes it and registers it under the node's id.
    static Visual* Build(Visual* parent, sdf::SdfNode* node);

    void resetAppearance() override;

    const std::vector<rob::PosTemplate<float>>& getPoints() const { return *points; }
    /// Whether there is a normal for each point; normals of another number count as none.
    bool hasNormals() const;
    /// Of what is drawn; empty if nothing is.
    Box getBoundingBox() const;

    /// Selects these points and no others. Indices past the end are dropped, and the order only tells in which they are
    /// drawn: the same set once more does nothing.
    void setSelectedIndices(const std::vector<std::uint64_t>& indices);
    /// In the order in which they were given, each once.
    const std::vector<std::uint64_t>& getSelectedIndices() const { return selectedIndices.ordered; }
    /// Takes effect at the next update. While nothing is selected, all points are drawn all the same.
    void setUnselectedVisible(bool visible) { hideUnselected = !visible; }
    /// Builds what is drawn anew and registers the cloud for picking. One of no points draws nothing and is not registered.
    void updateRenderPrimitive();

protected:
    void useMaterial(const std::string& name) override;

private:
    /// A set that keeps the order of its making.
    struct IndexSet {
        std::vector<std::uint64_t> ordered;
        std::unordered_set<std::uint64_t> known;

        bool add(std::uint64_t index);
        bool contains(std::uint64_t index) const { return known.contains(index); }
        std::size_t size() const { return ordered.size(); }
        bool empty() const { return ordered.empty(); }
    };

    void drawUnselected(bool phong);
    void drawSelected(bool phong);
    void registerForPicking();

    std::unique_ptr<ManualDrawing> drawing; // from the first update on
    const std::vector<rob::PosTemplate<float>>* points;
    const std::vector<rob::Vec3Template<float>>* normals;
    IndexSet selectedIndices;
    bool hideUnselected = false;
    float pointDiameter = 0; // of what is drawn, in model units
};

} // namespace vrk::visual
