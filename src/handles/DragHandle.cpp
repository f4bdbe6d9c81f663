#include "handles/DragHandle.h"

#include "platform/geometry/ColorText.h"
#include "selection/VisualSelection.h"
#include "visual/MeshVisual.h"
#include "visual/RenderGroups.h"

#include <OgreEntity.h>

#include <algorithm>

namespace vrk::visual {
namespace {

constexpr const char* hoverColor = "#FFD63D"; // that of other handles under the mouse
constexpr std::size_t mainHandles = 6;        // the arrows and the rings; their discs follow

std::size_t indexOf(DragHandle::HandleType handle)
{
    return static_cast<std::size_t>(handle);
}

} // namespace

DragHandle* DragHandle::Get()
{
    static auto* const handle = new DragHandle; // never deleted: OGRE is gone by the end of the process
    return handle;
}

void DragHandle::Build()
{
    DragHandle* handle = Get();
    handle->registerToSelection(true);
    // Behind the registration in the queue: what is not registered yet is not disabled.
    handle->postOwn([handle] { selection::VisualSelection::Get()->setCompoundObjectEnabled(handle, false); });
}

DragHandle::DragHandle() : FixedSizeHandle("DragHandle", nullptr)
{
    setHandle(handleX, MESH_DRAG_HANDLE_X, COLOR_X);
    setHandle(handleY, MESH_DRAG_HANDLE_Y, COLOR_Y);
    setHandle(handleZ, MESH_DRAG_HANDLE_Z, COLOR_Z);
    setHandle(handleRoll, MESH_DRAG_HANDLE_ROLL, COLOR_X);
    setHandle(handlePitch, MESH_DRAG_HANDLE_PITCH, COLOR_Y);
    setHandle(handleYaw, MESH_DRAG_HANDLE_YAW, COLOR_Z);
    setHandle(assistRoll, MESH_ROLL_ASSIST, geometry::ParseColorText(COLOR_X), ASSIST_HANDLE_ALPHA);
    setHandle(assistPitch, MESH_PITCH_ASSIST, geometry::ParseColorText(COLOR_Y), ASSIST_HANDLE_ALPHA);
    setHandle(assistYaw, MESH_YAW_ASSIST, geometry::ParseColorText(COLOR_Z), ASSIST_HANDLE_ALPHA);
    setAssistHandleVisible(false);
}

std::array<MeshVisual*, 9> DragHandle::allHandles() const
{
    return {handleX, handleY, handleZ, handleRoll, handlePitch, handleYaw, assistRoll, assistPitch, assistYaw};
}

DragHandle::HandleType DragHandle::getHandleType(const Visual* visual) const
{
    if (!visual)
        return HandleType::None;
    const std::array<MeshVisual*, 9> all = allHandles();
    return static_cast<HandleType>(std::ranges::find(all, visual) - all.begin());
}

MeshVisual* DragHandle::getHandle(HandleType handle) const
{
    return handle == HandleType::None ? nullptr : allHandles()[indexOf(handle)];
}

void DragHandle::setHandle(MeshVisual*& slot, const std::string& mesh, const std::string& color)
{
    setHandle(slot, mesh, geometry::ParseColorText(color), 1.0f);
}

void DragHandle::setHandle(MeshVisual*& slot, const std::string& mesh, const rob::Colorf& color, float alpha)
{
    slot = new MeshVisual(mesh, this);
    dress(slot, mesh, {color, alpha});
}

void DragHandle::resetHandle(MeshVisual*& slot, const std::string& mesh, const std::string& color)
{
    clearHandleMesh(slot);
    dress(slot, mesh, {geometry::ParseColorText(color), 1.0f});
}

void DragHandle::clearHandleMesh(MeshVisual*& slot)
{
    slot->detachMesh();
}

void DragHandle::dress(MeshVisual* handle, const std::string& mesh, const Look& look)
{
    handle->attachMesh(mesh)->setRenderQueueGroup(renderGroup::handles);
    handle->setMaterial(MATERIAL_AXIS, "", "");
    handle->setColor(look.color, look.alpha);
    const HandleType of = getHandleType(handle);
    looks[indexOf(of)] = look;
    if (hovered == of)
        hovered = HandleType::None;
}

void DragHandle::setRotationStyle(MeshVisual*& slot, const std::string& mesh, const std::string& color)
{
    showSingleHandle(slot);
    resetHandle(slot, mesh, color);
}

/// This one, and of a ring its disc.
void DragHandle::showSingleHandle(const MeshVisual* handle)
{
    const std::array<MeshVisual*, 9> all = allHandles();
    const std::size_t shown = indexOf(getHandleType(handle));
    for (std::size_t i = 0; i < mainHandles; ++i)
        all[i]->setVisible(i == shown, true);
    assistRoll->setVisible(handle == handleRoll, true);
    assistPitch->setVisible(handle == handlePitch, true);
    assistYaw->setVisible(handle == handleYaw, true);
}

void DragHandle::setMode(HandleType handle)
{
    switch (handle) {
    case HandleType::X:
        mode = Mode::X;
        break;
    case HandleType::Y:
        mode = Mode::Y;
        break;
    case HandleType::Z:
        mode = Mode::Z;
        break;
    case HandleType::Roll:
        mode = Mode::Roll;
        setRotationStyle(handleRoll, MESH_ROLL_MAIN, COLOR_ROLL_RESET);
        break;
    case HandleType::Pitch:
        mode = Mode::Pitch;
        setRotationStyle(handlePitch, MESH_PITCH_MAIN, COLOR_Y);
        break;
    case HandleType::Yaw:
        mode = Mode::Yaw;
        setRotationStyle(handleYaw, MESH_YAW_MAIN, COLOR_Z);
        break;
    default:
        mode = Mode::None;
        break;
    }
}

void DragHandle::resetMode()
{
    mode = Mode::None;
    resetHandle(handleRoll, MESH_DRAG_HANDLE_ROLL, COLOR_ROLL_RESET);
    resetHandle(handlePitch, MESH_DRAG_HANDLE_PITCH, COLOR_Y);
    resetHandle(handleYaw, MESH_DRAG_HANDLE_YAW, COLOR_Z);
    show();
}

void DragHandle::show()
{
    setMainHandleVisible(true);
    setAssistHandleVisible(false);
    showStatus = true;
}

void DragHandle::hide()
{
    setMainHandleVisible(false);
    setAssistHandleVisible(false);
    showStatus = false;
}

void DragHandle::setMainHandleVisible(bool shown)
{
    for (MeshVisual* handle : {handleX, handleY, handleZ, handleRoll, handlePitch, handleYaw})
        handle->setVisible(shown, true);
}

void DragHandle::setAssistHandleVisible(bool shown)
{
    for (MeshVisual* handle : {assistRoll, assistPitch, assistYaw})
        handle->setVisible(shown, true);
}

void DragHandle::showHover(HandleType handle)
{
    if (hovered == handle)
        return;
    if (MeshVisual* before = getHandle(hovered)) {
        const Look& look = looks[indexOf(hovered)];
        before->setColor(look.color, look.alpha);
    }
    hovered = handle;
    if (MeshVisual* now = getHandle(handle))
        now->setColor(geometry::ParseColorText(hoverColor), looks[indexOf(handle)].alpha);
}

} // namespace vrk::visual
