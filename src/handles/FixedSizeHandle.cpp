#include "handles/FixedSizeHandle.h"

#include "handles/TasksOfOwner.h"
#include "selection/VisualSelection.h"
#include "view/ScreenScale.h"

namespace vrk::visual {
namespace {

constexpr double sizeAtDistance = 0.00025; // the scale for each unit of the camera's distance
// Settings out of this range are taken for a mistake
constexpr float smallestSetting = 0.5f;
constexpr float largestSetting = 10.0f;

float usedSetting()
{
    const float setting = SceneCore::Get()->settings.handleScale;
    return setting < smallestSetting || setting > largestSetting ? 1.0f : setting;
}

} // namespace

FixedSizeHandle::FixedSizeHandle(const std::string& name, Visual* parent)
    : GuiVisual(name), posts(std::make_unique<TasksOfOwner>())
{
    if (parent)
        attachTo(parent);
    cameraListener = std::make_unique<ScreenScale>(*this, [this](float distance) { fitTo(distance); });
}

FixedSizeHandle::~FixedSizeHandle()
{
    // At once, also what an end of the registration that is still in the queue would have done: nothing of it may be met by
    // a pick any more.
    if (selection::VisualSelection* service = selection::VisualSelection::Get())
        service->removeCompoundObject(this);
}

void FixedSizeHandle::postOwn(std::function<void()> task) const
{
    posts->post(std::move(task));
}

void FixedSizeHandle::updateScale()
{
    cameraListener->update();
}

void FixedSizeHandle::fitTo(float distance)
{
    const auto scale = static_cast<float>(distance * sizeAtDistance * usedSetting());
    setScale(scale, scale, scale);
    if (registeredInSelection)
        selection::VisualSelection::Get()->markDirty(this);
}

void FixedSizeHandle::registerToSelection(bool priority)
{
    if (registeredInSelection)
        return;
    registeredInSelection = true;
    posts->post([this, priority] { selection::VisualSelection::Get()->addMeshVisual(this, false, priority); });
}

void FixedSizeHandle::unregisterFromSelection()
{
    if (!registeredInSelection)
        return;
    registeredInSelection = false;
    posts->post([this] { selection::VisualSelection::Get()->removeCompoundObject(this); });
}

} // namespace vrk::visual
