#pragma once

#include "handles/FixedSizeHandle.h"
#include "scene/math/Color.h"

#include <array>
#include <atomic>

namespace vrk::visual {

class MeshVisual;

/// The one handle with which the user moves and turns things: three arrows, three rings, and three faint discs that are seen
/// only while something is being turned.
///
/// `Scene::attachGuiTo` hangs it on what is moved, and `VisualSelection::setCompoundObjectEnabled` lets it be picked. It only
/// shows what is going on: where a drag leads is told by `AxisDrag` and `RingDrag`.
///
/// A ring that takes its other shape is picked where its first shape was.
///
/// Owner: the process. Thread: render thread; `Get` after start-up, `getMode` and `getShowStatus` on any.
class VRK_EXPORT DragHandle : public FixedSizeHandle {
public:
    enum class HandleType {
        X = 0,
        Y = 1,
        Z = 2,
        Roll = 3,
        Pitch = 4,
        Yaw = 5,
        AssistRoll = 6,
        AssistPitch = 7,
        AssistYaw = 8,
        None = 9,
    };
    enum class Mode { None = 0, X = 1, Y = 2, Z = 3, Roll = 4, Pitch = 5, Yaw = 6 };

    static constexpr const char* COLOR_X = "#F20c00";
    static constexpr const char* COLOR_Y = "#16A951";
    static constexpr const char* COLOR_Z = "#418AB4";
    static constexpr const char* COLOR_ROLL_RESET = "#C91F37"; ///< not the red in which the roll ring starts
    static constexpr const char* MATERIAL_AXIS = "Axis";
    static constexpr const char* MESH_DRAG_HANDLE_X = "DragHandleX";
    static constexpr const char* MESH_DRAG_HANDLE_Y = "DragHandleY";
    static constexpr const char* MESH_DRAG_HANDLE_Z = "DragHandleZ";
    static constexpr const char* MESH_DRAG_HANDLE_ROLL = "DragHandleRoll";
    static constexpr const char* MESH_DRAG_HANDLE_PITCH = "DragHandlePitch";
    static constexpr const char* MESH_DRAG_HANDLE_YAW = "DragHandleYaw";
    static constexpr const char* MESH_ROLL_MAIN = "RollHandleMain";
    static constexpr const char* MESH_PITCH_MAIN = "PitchHandleMain";
    static constexpr const char* MESH_YAW_MAIN = "YawHandleMain";
    static constexpr const char* MESH_ROLL_ASSIST = "RollHandleAssist";
    static constexpr const char* MESH_PITCH_ASSIST = "PitchHandleAssist";
    static constexpr const char* MESH_YAW_ASSIST = "YawHandleAssist";
    static constexpr float ASSIST_HANDLE_ALPHA = 0.1f;

    static DragHandle* Get();
    /// Registers the handle for picking, disabled.
    static void Build();

    Mode getMode() const { return mode; }
    bool getShowStatus() const { return showStatus; }
    void setShowStatus(bool shown) { showStatus = shown; }
    /// `None` for what is no part of the handle.
    HandleType getHandleType(const Visual* visual) const;
    void setMode(const Visual* visual) { setMode(getHandleType(visual)); }
    /// Of an arrow nothing changes on the screen. A ring takes its larger shape, its disc appears and all else goes; a
    /// hidden handle is seen then, too. Of anything else the mode ends and the screen stays as it is.
    void setMode(HandleType handle);
    /// Ends the mode, brings the small rings back, and shows the handle even if it was hidden.
    void resetMode();
    /// Shows the arrows and the rings, in the shape that they have.
    void show();
    void hide();

    /// Shows which handle the mouse is on, by its colour, and ends that of the one before; `None` only ends it. A ring that
    /// takes another shape comes in its own colour.
    void showHover(HandleType handle);
    /// Null for `None`.
    MeshVisual* getHandle(HandleType handle) const;

private:
    struct Look {
        rob::ColorTemplate<float> color;
        float alpha = 1.0f;
    };

    DragHandle();
    void setHandle(MeshVisual*& slot, const std::string& mesh, const std::string& color);
    void setHandle(MeshVisual*& slot, const std::string& mesh, const rob::ColorTemplate<float>& color, float alpha);
    void resetHandle(MeshVisual*& slot, const std::string& mesh, const std::string& color);
    void clearHandleMesh(MeshVisual*& slot);
    void dress(MeshVisual* handle, const std::string& mesh, const Look& look);
    void setRotationStyle(MeshVisual*& slot, const std::string& mesh, const std::string& color);
    void showSingleHandle(const MeshVisual* handle);
    void setMainHandleVisible(bool visible);
    void setAssistHandleVisible(bool visible);
    std::array<MeshVisual*, 9> allHandles() const;

    MeshVisual* handleX = nullptr;
    MeshVisual* handleY = nullptr;
    MeshVisual* handleZ = nullptr;
    MeshVisual* handleRoll = nullptr;
    MeshVisual* handlePitch = nullptr;
    MeshVisual* handleYaw = nullptr;
    MeshVisual* assistRoll = nullptr;
    MeshVisual* assistPitch = nullptr;
    MeshVisual* assistYaw = nullptr;
    std::atomic<Mode> mode{Mode::None};
    std::atomic<bool> showStatus{true};
    std::array<Look, 9> looks; // by handle type
    HandleType hovered = HandleType::None;
};

} // namespace vrk::visual
