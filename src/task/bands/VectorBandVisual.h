#pragma once

#include "scene/math/Color.h"
#include "task/bands/BandVectorVisual.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace Ogre {
class ManualObject;
}

namespace vrk::visual {

class ManualDrawing;
class MeshVisual;

/// A manufacturing shape as a translucent ribbon swept along its edges, whose width is the tool direction at each point. On
/// it lie its single tool directions, which can be picked, and the edges themselves; an arrow stands where the run begins.
///
/// The band is in the coordinates of its edges. Its look is the last colour that was set: custom parameter 0 of the ribbon.
/// A selected vector, a previewed one and a selected range go beside it, each for itself. The shape is not kept: each
/// operation that needs it is given it, as it is in the model by then.
///
/// Owner: the parent visual. The arrow hangs under that parent and not under the band, and dies with the band all the same.
/// Thread: render thread.
class VRK_EXPORT VectorBandVisual : public Visual {
public:
    using PathPoint = task::EdgeMfgShape::PathPoint;

    /// Not registered. A shape without edges is an empty ribbon and has no arrow.
    /// @throws std::overflow_error "0-length vector cannot be normalized." where a tool direction lies along its edge;
    ///         nothing is left behind then.
    VectorBandVisual(unsigned id, Visual* parent, const task::EdgeMfgShape& shape);
    ~VectorBandVisual() override;

    /// Draws a changed shape. What was selected or previewed is forgotten. The edges that were drawn before stay, and new
    /// ones come over them: a band has them all until it ends.
    /// @throws as the constructor; the band is without a ribbon then until the next update.
    void updateBand(const task::EdgeMfgShape& shape);

    // One vector. A point matches a vector of its own edge whose parameter is less than 1e-6 away.

    /// Shows this one selected, and no other: the one that is there, else one that is made for as long as it is selected.
    void selectVector(const task::EdgeMfgShape& shape, PathPoint point);
    void clearSelectedVector();
    /// Shows the vector at a place highlighted, in place of an earlier preview.
    void previewVector(const task::EdgeMfgShape& shape, PathPoint point);
    void clearPreviewVector();
    /// The first that matches; null without.
    BandVectorVisual* findBandVector(PathPoint point) const;

    // A range

    /// Paints a piece of the run, in place of one that was painted.
    void selectRange(const task::EdgeMfgShape& shape, PathPoint from, PathPoint to);
    void updateSelectedBand(const task::EdgeMfgShape& shape, PathPoint from, PathPoint to);
    void clearSelectedRange();

    /// The arrow goes along, and with the children their part in picking: a line that is not seen is not picked.
    void setVisible(bool visible, bool recursive) override;

    // The look of the ribbon

    void setRegionReorderCandidate();
    void setRegionReorderSelected();
    void resetAppearance() override;
    void setSelected() override;
    void setHighlighted() override;
    /// Ends everything that is selected or previewed on the band, too.
    void clearHighlightOrSelect() override;

    Ogre::ManualObject* getBand() const;
    /// Null before the first range.
    Ogre::ManualObject* getSelectedBand() const;
    const std::vector<BandVectorVisual*>& getBandVectors() const { return bandVectors; }
    // Null without
    BandVectorVisual* getSelectedVector() const { return selectedVector; }
    BandVectorVisual* getExtraSelectedVector() const { return extraSelectedVector; }
    BandVectorVisual* getPreviewVector() const { return previewed; }
    MeshVisual* getArrow() const;

private:
    friend class BandVectorVisual; // tells of its end

    void drawMfgShape(const task::EdgeMfgShape& shape);
    void drawVectors(const task::EdgeMfgShape& shape);
    void drawArrow(const task::EdgeMfgShape& shape);
    void deleteArrow();
    void forgetVector(const BandVectorVisual* vector);
    void setColor(const rob::ColorTemplate<float>& color, float alpha);

    std::unique_ptr<ManualDrawing> band;
    std::unique_ptr<ManualDrawing> selectedBand;
    // Children, which tell when they die
    std::vector<BandVectorVisual*> bandVectors;
    BandVectorVisual* previewed = nullptr;
    BandVectorVisual* extraSelectedVector = nullptr;
    BandVectorVisual* selectedVector = nullptr; // one of `bandVectors`
    std::string arrowNode;                      // its name, which no other node ever has; empty without an arrow
};

} // namespace vrk::visual
