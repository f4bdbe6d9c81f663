#include "preview/marks/PreviewVisualsHelper.h"

#include "handles/TasksOfOwner.h"
#include "platform/broker/SignalBroker.h"
#include "preview/marks/PickedMarks.h"
#include "scene/core/SceneCore.h"

#include <initializer_list>

namespace vrk::visual {
namespace {

PreviewVisualsHelper* instance = nullptr;

template <typename Mark, typename... Arguments>
Mark* makeHidden(Arguments... arguments)
{
    auto* mark = new Mark(SceneCore::Get()->worldVisual, arguments...);
    mark->setVisible(false, true);
    return mark;
}

void place(Visual& mark, const rob::Posf& position)
{
    mark.setWorldPosition(position);
    mark.setVisible(true, true);
}

void place(Visual& mark, const rob::Posef& pose)
{
    mark.setWorldPose(pose);
    mark.setVisible(true, true);
}

void show(FromToLineVisual& line, const rob::Posf& from, const rob::Posf& to)
{
    line.set(from, to);
    line.setVisible(true, true);
}

void setLook(Visual& line, const std::string& material)
{
    line.setMaterial(material, material, material);
}

} // namespace

PreviewVisualsHelper::PreviewVisualsHelper() : posts(std::make_unique<TasksOfOwner>())
{
    for (SelectPointVisual*& each : point)
        each = makeHidden<SelectPointVisual>();
    primaryLine = makeHidden<FromToLineVisual>("RedFrameLine");
    axisXLine = makeHidden<FromToLineVisual>("GreenFrameLine");
    axisYLine = makeHidden<FromToLineVisual>("BlueFrameLine");
    userFrame = makeHidden<PreviewFrameVisual>();
    objectFrame = makeHidden<PreviewFrameVisual>();
    instance = this;
}

PreviewVisualsHelper::~PreviewVisualsHelper()
{
    for (SelectPointVisual* each : point)
        Visual::Delete(each);
    for (FromToLineVisual* line : {primaryLine, axisXLine, axisYLine})
        Visual::Delete(line);
}

PreviewVisualsHelper* PreviewVisualsHelper::Get()
{
    return instance;
}

bool PreviewVisualsHelper::isShown(std::size_t index) const
{
    return point[index]->isVisible();
}

rob::Posf PreviewVisualsHelper::positionOf(std::size_t index) const
{
    return point[index]->getWorldPosition();
}

void PreviewVisualsHelper::addPrimaryFrom(const Pos& position)
{
    posts->post([this, position] { doAddPrimaryFrom(position); });
}

void PreviewVisualsHelper::addPrimaryTo(const Pos& position)
{
    posts->post([this, position] { doAddPrimaryTo(position); });
}

void PreviewVisualsHelper::addAxisXFrom(const Pos& position)
{
    posts->post([this, position] { doAddAxisXFrom(position); });
}

void PreviewVisualsHelper::addAxisXTo(const Pos& position)
{
    posts->post([this, position] { doAddAxisXTo(position); });
}

void PreviewVisualsHelper::addAxisYFrom(const Pos& position)
{
    posts->post([this, position] { doAddAxisYFrom(position); });
}

void PreviewVisualsHelper::addAxisYTo(const Pos& position)
{
    posts->post([this, position] { doAddAxisYTo(position); });
}

void PreviewVisualsHelper::addSelectPoint1(const Pos& position)
{
    posts->post([this, position] { doAddSelectPoint1(position); });
}

void PreviewVisualsHelper::addSelectPoint2(const Pos& position)
{
    posts->post([this, position] { doAddSelectPoint2(position); });
}

void PreviewVisualsHelper::addSelectPoint3(const Pos& position)
{
    posts->post([this, position] { doAddSelectPoint3(position); });
}

void PreviewVisualsHelper::addSelectFramePoint1(const Pos& position)
{
    posts->post([this, position] { doAddSelectFramePoint1(position); });
}

void PreviewVisualsHelper::addSelectFramePoint2(const Pos& position)
{
    posts->post([this, position] { doAddSelectFramePoint2(position); });
}

void PreviewVisualsHelper::addSelectFramePoint3(const Pos& position)
{
    posts->post([this, position] { doAddSelectFramePoint3(position); });
}

void PreviewVisualsHelper::addPreviewUserFrame(const Pose& pose)
{
    posts->post([this, pose] { doAddPreviewUserFrame(pose); });
}

void PreviewVisualsHelper::addPreviewObjectFrame(const Pose& pose)
{
    posts->post([this, pose] { doAddPreviewObjectFrame(pose); });
}

void PreviewVisualsHelper::setPrimaryLineSelected(bool selected)
{
    posts->post([this, selected] { doSetPrimaryLineSelected(selected); });
}

void PreviewVisualsHelper::setAxisXLineSelected(bool selected)
{
    posts->post([this, selected] { doSetAxisXLineSelected(selected); });
}

void PreviewVisualsHelper::setAxisYLineSelected(bool selected)
{
    posts->post([this, selected] { doSetAxisYLineSelected(selected); });
}

void PreviewVisualsHelper::removeAllVisuals()
{
    posts->post([this] { doRemoveAllVisuals(); });
}

// The line stays hidden: it is the other end that shows it.
void PreviewVisualsHelper::doAddPrimaryFrom(const Pos& position)
{
    place(*point[0], position);
    if (isShown(1))
        primaryLine->set(position, positionOf(1));
    broker::SignalBroker::updateScene();
}

void PreviewVisualsHelper::doAddPrimaryTo(const Pos& position)
{
    place(*point[1], position);
    show(*primaryLine, positionOf(0), position); // wherever the other end stands, shown or not
    broker::SignalBroker::updateScene();
}

// The line stays hidden: it is the other end that shows it.
void PreviewVisualsHelper::doAddAxisXFrom(const Pos& position)
{
    place(*point[2], position);
    if (isShown(3))
        axisXLine->set(position, positionOf(3));
    broker::SignalBroker::updateScene();
}

void PreviewVisualsHelper::doAddAxisXTo(const Pos& position)
{
    place(*point[3], position);
    show(*axisXLine, positionOf(2), position); // wherever the other end stands, shown or not
    broker::SignalBroker::updateScene();
}

// The line stays hidden: it is the other end that shows it.
void PreviewVisualsHelper::doAddAxisYFrom(const Pos& position)
{
    place(*point[4], position);
    if (isShown(5))
        axisYLine->set(position, positionOf(5));
    broker::SignalBroker::updateScene();
}

void PreviewVisualsHelper::doAddAxisYTo(const Pos& position)
{
    place(*point[5], position);
    show(*axisYLine, positionOf(4), position); // wherever the other end stands, shown or not
    broker::SignalBroker::updateScene();
}

void PreviewVisualsHelper::doAddSelectPoint1(const Pos& position)
{
    place(*point[0], position);
    if (isShown(1))
        show(*primaryLine, position, positionOf(1));
    if (isShown(2))
        show(*axisYLine, positionOf(2), position);
    broker::SignalBroker::updateScene();
}

void PreviewVisualsHelper::doAddSelectPoint2(const Pos& position)
{
    place(*point[1], position);
    if (isShown(0))
        show(*primaryLine, positionOf(0), position);
    if (isShown(2))
        show(*axisXLine, position, positionOf(2));
    broker::SignalBroker::updateScene();
}

void PreviewVisualsHelper::doAddSelectPoint3(const Pos& position)
{
    place(*point[2], position);
    if (isShown(1))
        show(*axisXLine, positionOf(1), position);
    if (isShown(0))
        show(*axisYLine, position, positionOf(0));
    broker::SignalBroker::updateScene();
}

void PreviewVisualsHelper::doAddSelectFramePoint1(const Pos& position)
{
    place(*point[0], position);
    if (isShown(1))
        show(*primaryLine, position, positionOf(1));
    if (isShown(2))
        show(*axisXLine, position, positionOf(2));
}

void PreviewVisualsHelper::doAddSelectFramePoint2(const Pos& position)
{
    place(*point[1], position);
    if (isShown(0))
        show(*primaryLine, positionOf(0), position);
}

void PreviewVisualsHelper::doAddSelectFramePoint3(const Pos& position)
{
    place(*point[2], position);
    if (isShown(0))
        show(*axisXLine, position, positionOf(0));
}

void PreviewVisualsHelper::doAddPreviewUserFrame(const Pose& pose)
{
    place(*userFrame, pose);
}

void PreviewVisualsHelper::doAddPreviewObjectFrame(const Pose& pose)
{
    place(*objectFrame, pose);
}

void PreviewVisualsHelper::doSetPrimaryLineSelected(bool selected)
{
    setLook(*primaryLine, selected ? "RedFrameLineSelected" : "RedFrameLine");
}

void PreviewVisualsHelper::doSetAxisXLineSelected(bool selected)
{
    setLook(*axisXLine, selected ? "GreenFrameLineSelected" : "GreenFrameLine");
}

void PreviewVisualsHelper::doSetAxisYLineSelected(bool selected)
{
    setLook(*axisYLine, selected ? "BlueFrameLineSelected" : "BlueFrameLine");
}

void PreviewVisualsHelper::doRemoveAllVisuals()
{
    for (SelectPointVisual* each : point) {
        each->setWorldPosition({});
        each->setVisible(false, true);
    }
    // The lines keep their points, which are overwritten before they show again.
    for (Visual* mark : std::initializer_list<Visual*>{primaryLine, axisXLine, axisYLine, userFrame, objectFrame})
        mark->setVisible(false, true);
    broker::SignalBroker::updateScene();
}

} // namespace vrk::visual
