#pragma once

#include "platform/geometry/PointColor.h"
#include "platform/layout/PointSet.h"
#include "scene/math/Color.h"
#include "selection/geometry/Box.h"
#include "visual/Visual.h"

#include <memory>
#include <unordered_set>
#include <vector>

namespace vrk::visual {

class ManualDrawing;

/// A scanned cloud, in the colours of its points where it has any, else coloured by height within its bounding box, and lit
/// where it has normals. A subset of its points can be selected, and the others hidden.
///
/// The points stay the station's: the cloud's node must outlive the visual, or be removed after it. A point that is not
/// finite, or farther out than any station reaches, is not drawn.
///
/// A change of selection costs a rebuild of all that is drawn. Any change of the visual's own look, its highlight for
/// one, empties the selection of points.
///
/// Points that are marked look like selected ones, and points that are hidden are neither drawn nor picked. Both keep the
/// vertices that the GPU has, and stay through a change of the look; a point that is marked and hidden is not drawn.
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
    /// Whether there is a colour for each point; colours of another number count as none.
    bool hasColors() const;
    /// Whether the points' colours are shown, where there are any, or their heights. The vertices stay those that the GPU has.
    void showHeights(bool byHeight);
    bool areHeightsShown() const { return byHeight || !hasColors(); }
    /// Of what is drawn; empty if nothing is.
    Box getBoundingBox() const;
    /// The same with the points that are hidden.
    const Box& getBoxOfAllPoints() const { return boxOfAll; }

    /// Selects these points and no others. Indices past the end are dropped, and the order only tells in which they are
    /// drawn: the same set once more does nothing. What was marked no longer is.
    void setSelectedIndices(const std::vector<std::uint64_t>& indices);
    /// In the order in which they were given, each once.
    const std::vector<std::uint64_t>& getSelectedIndices() const { return selectedIndices.ordered; }
    /// Takes effect at the next update. While nothing is selected, all points are drawn all the same.
    void setUnselectedVisible(bool visible) { hideUnselected = !visible; }
    /// Marks these points and no others: for many of them, a small part of the time that a selection takes. It ends a
    /// selection of points.
    /// @param numbers  ascending; those past the end are dropped.
    void markPoints(std::vector<std::uint32_t> numbers);
    const std::vector<std::uint32_t>& getMarkedPoints() const { return marked; }
    /// Hides these points and no others. The picking service leaves them out at once, though it has to be updated before it
    /// answers again, which is soon done. Heights are coloured as if all were there.
    /// @param points  null for none.
    void hidePoints(std::shared_ptr<const layout::PointSet> points);
    /// Null where none are.
    const std::shared_ptr<const layout::PointSet>& getHiddenPoints() const { return hidden; }
    /// Call it when the cloud of the station has other points than before: draws them, but for these. None are selected or
    /// marked then.
    void takeOtherPoints(std::shared_ptr<const layout::PointSet> hidden);
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

    const char* unselectedMaterial() const;
    void drawUnselected(bool phong);
    void drawSelected(bool phong);
    bool isHidden(std::size_t number) const { return hidden && hidden->contains(number); }
    void leaveOutHidden();
    void drawMarked();
    void registerForPicking();

    std::unique_ptr<ManualDrawing> drawing; // from the first update on
    const std::vector<rob::PosTemplate<float>>* points;
    const std::vector<rob::Vec3Template<float>>* normals;
    const std::vector<PointColor>* colors;
    IndexSet selectedIndices;
    std::vector<std::uint32_t> marked;              // empty where any are selected
    std::shared_ptr<const layout::PointSet> hidden; // null where none are
    layout::PointSet undrawn;                       // those that no station reaches; they have no vertex
    Box boxOfAll;
    bool hideUnselected = false;
    bool byHeight = false;
    float pointDiameter = 0; // of what is drawn, in model units
};

} // namespace vrk::visual
