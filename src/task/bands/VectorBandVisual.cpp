#include "task/bands/VectorBandVisual.h"

#include "task/bands/Ribbon.h"
#include "visual/CurveVisual.h"
#include "visual/ManualDrawing.h"
#include "visual/MeshVisual.h"
#include "visual/Picking.h"
#include "visual/RenderGroups.h"

#include <Ogre.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrk::visual {
namespace {

constexpr double sameParameter = 1e-6; // by which a place is that of a vector

struct Look {
    rob::ColorTemplate<float> color;
    float alpha;
};

rob::ColorTemplate<float> colorOf(int red, int green, int blue)
{
    return {static_cast<float>(red / 255.0), static_cast<float>(green / 255.0), static_cast<float>(blue / 255.0)};
}

const Look normalLook{colorOf(88, 252, 253), 0.5f};
const Look highlightedLook{colorOf(252, 255, 54), 0.1f};
const Look selectedLook{colorOf(252, 255, 54), 0.5f};
const Look candidateLook{colorOf(40, 130, 255), 0.55f};
const Look reorderLook{colorOf(255, 136, 0), 0.7f};
const Look rangeLook{colorOf(252, 100, 54), 0.5f};

/// Draws a section into an object that has none. Nothing of it is begun if the ribbon cannot be made.
void drawRibbon(Ogre::ManualObject& object, const char* material, const task::EdgeMfgShape& shape,
                const std::vector<VectorBandVisual::PathPoint>& points)
{
    const std::vector<RibbonVertex> vertices = MakeRibbon(shape, points);
    if (vertices.empty())
        return; // OGRE would keep no section of it
    object.estimateVertexCount(vertices.size());
    object.begin(material, Ogre::RenderOperation::OT_TRIANGLE_STRIP,
                 Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
    for (const RibbonVertex& vertex : vertices) {
        const rob::PosTemplate<float> position(vertex.position);
        const rob::DirTemplate<float> normal(vertex.normal);
        object.position(position.x, position.y, position.z);
        object.normal(normal.x, normal.y, normal.z);
    }
    object.end();
}

} // namespace

VectorBandVisual::VectorBandVisual(unsigned id, Visual* parent, const task::EdgeMfgShape& shape)
    : Visual(id, parent), band(std::make_unique<ManualDrawing>(*this))
{
    try {
        drawMfgShape(shape);
    } catch (...) {
        clearChildren();
        deleteArrow();
        throw;
    }
    VectorBandVisual::resetAppearance();
}

VectorBandVisual::~VectorBandVisual()
{
    deleteArrow();
}

void VectorBandVisual::drawMfgShape(const task::EdgeMfgShape& shape)
{
    drawRibbon(**band, "VectorBand", shape, shape.getPathPointsForRender());
    drawVectors(shape);
    drawArrow(shape);
    for (const geometry::MfgVectors& of : shape.getMfgVectors())
        CurveVisual::Build(this, of.edge);
}

void VectorBandVisual::drawVectors(const task::EdgeMfgShape& shape)
{
    for (const geometry::MfgVectors& of : shape.getUsedMfgVectors()) {
        const int index = shape.getMfgVectorsIndex(of.edge).value(); // a shape knows its own edges
        for (const geometry::MfgVector& vector : of.vectors)
            bandVectors.push_back(new BandVectorVisual(this, of.edge, vector, {index, vector.parameter}));
    }
}

void VectorBandVisual::drawArrow(const task::EdgeMfgShape& shape)
{
    deleteArrow();
    if (shape.getMfgVectors().empty())
        return; // it begins nowhere
    const PathPoint start = shape.getStart();
    const auto [point, tangent] = geometry::GetEdgePointInfoAtParam(shape.getEdge(start.edge), start.parameter);
    arrowNode = MeshVisual::BuildArrow(getParent(), rob::PosTemplate<float>(point), rob::DirTemplate<float>(tangent))
                    ->getName();
}

Ogre::ManualObject* VectorBandVisual::getBand() const
{
    return &**band;
}

Ogre::ManualObject* VectorBandVisual::getSelectedBand() const
{
    return selectedBand ? &**selectedBand : nullptr;
}

MeshVisual* VectorBandVisual::getArrow() const
{
    // Looked up, since it may have died with the parent that it hangs under, or by itself.
    const Ogre::SceneManager& manager = *sceneNode->getCreator();
    if (arrowNode.empty() || !manager.hasSceneNode(arrowNode))
        return nullptr;
    return dynamic_cast<MeshVisual*>(visualOf(*manager.getSceneNode(arrowNode)));
}

void VectorBandVisual::deleteArrow()
{
    if (MeshVisual* arrow = getArrow())
        Delete(arrow);
    arrowNode.clear();
}

void VectorBandVisual::updateBand(const task::EdgeMfgShape& shape)
{
    (*band)->clear();
    clearPreviewVector();
    clearSelectedVector();
    clearSelectedRange();
    while (!bandVectors.empty())
        Delete(bandVectors.back()); // which takes it out of the list
    drawMfgShape(shape);
    resetAppearance();
}

BandVectorVisual* VectorBandVisual::findBandVector(PathPoint point) const
{
    const auto found = std::ranges::find_if(bandVectors, [point](const BandVectorVisual* vector) {
        const std::optional<PathPoint> at = vector->getPathPoint();
        return at && at->edge == point.edge && std::abs(at->parameter - point.parameter) < sameParameter;
    });
    return found == bandVectors.end() ? nullptr : *found;
}

void VectorBandVisual::selectVector(const task::EdgeMfgShape& shape, PathPoint point)
{
    clearSelectedVector();
    selectedVector = findBandVector(point);
    if (!selectedVector)
        extraSelectedVector = new BandVectorVisual(this, shape.getEdge(point.edge), shape.getMfgVector(point));
    (selectedVector ? selectedVector : extraSelectedVector)->setSelected();
}

void VectorBandVisual::clearSelectedVector()
{
    if (BandVectorVisual* vector = std::exchange(selectedVector, nullptr))
        vector->resetAppearance();
    if (extraSelectedVector)
        Delete(extraSelectedVector);
}

void VectorBandVisual::previewVector(const task::EdgeMfgShape& shape, PathPoint point)
{
    clearPreviewVector();
    previewed = new BandVectorVisual(this, shape.getEdge(point.edge), shape.getMfgVector(point));
    previewed->setHighlighted();
}

void VectorBandVisual::clearPreviewVector()
{
    if (previewed)
        Delete(previewed);
}

void VectorBandVisual::forgetVector(const BandVectorVisual* vector)
{
    std::erase(bandVectors, vector);
    for (BandVectorVisual** kept : {&previewed, &extraSelectedVector, &selectedVector})
        if (*kept == vector)
            *kept = nullptr;
}

void VectorBandVisual::selectRange(const task::EdgeMfgShape& shape, PathPoint from, PathPoint to)
{
    if (!selectedBand) {
        selectedBand = std::make_unique<ManualDrawing>(*this);
        (*selectedBand)->setVisible(visible); // what is attached to a hidden node later would be seen
        // Behind the band in the queue: the two lie in one place, where no depth tells which covers the other.
        (*selectedBand)->setRenderQueueGroupAndPriority(renderGroup::normal, OGRE_RENDERABLE_DEFAULT_PRIORITY + 1);
    } else {
        (*selectedBand)->clear();
    }
    drawRibbon(**selectedBand, "SelectedBand", shape, shape.getPathPointsForRender(from, to));
    selectedBand->setColor(rangeLook.color, rangeLook.alpha);
}

void VectorBandVisual::updateSelectedBand(const task::EdgeMfgShape& shape, PathPoint from, PathPoint to)
{
    selectRange(shape, from, to);
}

void VectorBandVisual::clearSelectedRange()
{
    if (selectedBand)
        (*selectedBand)->clear();
}

void VectorBandVisual::setVisible(bool nowVisible, bool recursive)
{
    Visual::setVisible(nowVisible, recursive);
    if (MeshVisual* arrow = getArrow())
        arrow->setVisible(nowVisible, recursive);
    if (recursive)
        picking::setCompoundObjectEnabled(this, nowVisible);
}

void VectorBandVisual::setColor(const rob::ColorTemplate<float>& color, float alpha)
{
    band->setColor(color, alpha);
}

void VectorBandVisual::setRegionReorderCandidate()
{
    setColor(candidateLook.color, candidateLook.alpha);
}

void VectorBandVisual::setRegionReorderSelected()
{
    setColor(reorderLook.color, reorderLook.alpha);
}

void VectorBandVisual::resetAppearance()
{
    setColor(normalLook.color, normalLook.alpha);
}

void VectorBandVisual::setSelected()
{
    setColor(selectedLook.color, selectedLook.alpha);
}

void VectorBandVisual::setHighlighted()
{
    setColor(highlightedLook.color, highlightedLook.alpha);
}

void VectorBandVisual::clearHighlightOrSelect()
{
    resetAppearance();
    clearSelectedVector();
    clearSelectedRange();
    clearPreviewVector();
}

} // namespace vrk::visual
