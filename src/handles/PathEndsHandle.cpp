#include "handles/PathEndsHandle.h"

#include "handles/HandleMeshVisual.h"
#include "handles/TasksOfOwner.h"
#include "platform/task/EdgeMfgShape.h"
#include "selection/VisualSelection.h"
#include "visual/DynamicLines.h"
#include "visual/LineVisual.h"

namespace vrk::visual {
namespace {

constexpr float stemLength = 37.5f; // model units

PathEndsHandle* instance = nullptr;

/// What stands on the work at a place of a run.
rob::Posef poseAt(const task::EdgeMfgShape& shape, const task::EdgeMfgShape::PathPoint& point)
{
    return rob::Posef(shape.getMfgVector(point).getPose(shape.getEdge(point.edge)));
}

} // namespace

PathEndHandle::PathEndHandle(const std::string& name, Visual* parent, const rob::Colorf& color)
    : Visual(parent), posts(std::make_unique<TasksOfOwner>()), boundary(new LineVisual(this)),
      knob(new HandleMeshVisual(name, this))
{
    DynamicLines* stem = boundary->createDynamicLine(RenderOpType::Lines);
    stem->addPoint(0, 0, 0);
    stem->addPoint(0, 0, stemLength);
    boundary->update();
    boundary->setMaterial("PathBoundary", "", "");
    knob->attachMesh(name);
    knob->setMaterial("Axis", "", "HandleHighlight");
    knob->setColor(color, 1.0f);
    knob->setPosition(0, 0, stemLength);
    posts->post([this] { selection::VisualSelection::Get()->addMeshVisual(knob, false, true); });
}

PathEndHandle::~PathEndHandle()
{
    clearChildren(); // of which none is left if it dies with the tree
}

void PathEndHandle::enableSelection()
{
    postEnabled(true);
}

void PathEndHandle::disableSelection()
{
    postEnabled(false);
}

void PathEndHandle::postEnabled(bool enabled)
{
    posts->post([this, enabled] { selection::VisualSelection::Get()->setObjectEnabled(knob, enabled); });
}

PathEndsHandle::PathEndsHandle()
    : GuiVisual("PathEnd"), startHandle(new PathEndHandle("PathStartHandle", this, {1, 0, 0})),
      endHandle(new PathEndHandle("PathEndHandle", this, {0, 1, 0}))
{
    disableSelection();
}

PathEndsHandle::~PathEndsHandle()
{
    clearChildren();
    if (instance == this)
        instance = nullptr;
}

void PathEndsHandle::Init()
{
    if (!instance)
        instance = new PathEndsHandle;
}

PathEndsHandle* PathEndsHandle::Get()
{
    return instance;
}

void PathEndsHandle::enableSelection()
{
    startHandle->enableSelection();
    if (endShown)
        endHandle->enableSelection();
}

void PathEndsHandle::disableSelection()
{
    startHandle->disableSelection();
    endHandle->disableSelection();
}

rob::Posf PathEndsHandle::startWorldPos() const
{
    return startHandle->getKnob()->getWorldPosition();
}

rob::Posf PathEndsHandle::endWorldPos() const
{
    return endHandle->getKnob()->getWorldPosition();
}

void PathEndsHandle::updatePosition(const task::EdgeMfgShape& shape)
{
    if (shape.getMfgVectors().empty())
        return;
    startHandle->setPose(poseAt(shape, shape.getStart()));
    endShown = !shape.closed;
    endHandle->setVisible(endShown, true);
    if (endShown)
        endHandle->setPose(poseAt(shape, shape.getEnd())); // picked again only after the next `enableSelection`
    else
        endHandle->disableSelection();
}

} // namespace vrk::visual
