#pragma once

#include "platform/common/Export.h"
#include "scene/core/RenderTaskQueue.h"
#include "scene/core/SceneSettings.h"
#include "scene/math/Pose.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Ogre {
class SceneManager;
}
namespace sdf {
class SdfNode;
}
class TopoDS_Face;
class TopoDS_Shape;

namespace vrk::visual {

class Camera;
class SceneCore;
class SolidVisual;
class Visual;
class VisualStateManager;

/// The one object through which an application drives the view.
///
/// Operations that touch OGRE post: they return at once, and their work runs on the render thread in `processMsgs`, in
/// the order of the posts. The library has no thread and no frame loop of its own; the application calls `processMsgs`
/// and then renders. Ids are those of the model's objects; where an id names a parent, 0 is the world.
///
/// A failure on the render thread leaves `processMsgs` and takes the rest of that batch with it.
///
/// Owner: the library, from `Init` to the end of the process. Thread: each family says; "at once" means that the work is
/// done before the call returns.
class VRK_EXPORT Scene {
public:
    /// Which of two groups, whose collisions are looked at, a visual belongs to.
    enum class VisualCollisionState { None = 0, GroupA = 1, GroupB = 2 };

    // Life

    /// Null before start-up.
    static Scene* Get();
    static void Init(const SceneSettings& settings);
    static std::string GetName();
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    // Queue

    /// Any thread; raises `updateScene`. See `RenderTaskQueue::post`.
    void addRenderTask(std::function<void()>&& task, std::uint64_t key);
    /// Work for the end of the next station load. Render thread.
    void addLoadTask(std::function<void()> task);
    /// Runs what was posted. The application's render thread. See `RenderTaskQueue::run`.
    void processMsgs();
    /// Asks for one more frame after the present batch. Render thread.
    void instanceDirty();

    // Registry; at once

    /// @throws std::out_of_range "invalid unordered_map<K, T> key" for an unknown id.
    static Visual* GetVisual(unsigned id);
    static bool HasVisual(unsigned id);
    static Visual* GetWorldVisual();
    static VisualStateManager* GetStateManager();
    static Ogre::SceneManager* GetSceneManager();
    void addTempVisual(Visual* visual);
    /// Render thread. The visual and its descendants leave the registry and the selection, and die.
    void deleteVisual(Visual* visual);

    // Removal; posted. An unknown id fails on the render thread as `GetVisual` does.

    void removeVisual(unsigned id);
    /// A visual that was entered by `addTempVisual`.
    void removeTempVisual(unsigned id);

    // Visibility; posted

    /// Shows or hides a visual with its children, and with it its part in picking. The members of a group for its id. An
    /// id that the model does not know is passed over without a post.
    void setVisualVisible(unsigned id, bool visible);

    // Appearance. Posted, but for the records of what is highlighted, which change at once: call these from one thread.

    /// Nothing for a visual that is highlighted already; a selected one shows no highlight, but the old one goes.
    void setVisualHighlighted(Visual* visual);
    /// @throws std::out_of_range as `GetVisual` does, at once.
    void setVisualHighlighted(unsigned id);
    /// Ends the highlight of a whole visual.
    void clearHighlightedBody();
    /// Ends every highlight: of a visual, of a face, of an edge.
    void clearHighlightedVisual();
    /// This visual, and nothing else. An id without a visual may name a task or an operation: what it holds is selected.
    void setVisualSelected(unsigned id);
    void setVisualSelected(Visual* visual);
    /// These visuals, and nothing else. The outline around them is not switched on.
    void setVisualsSelected(const std::vector<unsigned>& ids);
    void clearSelectedVisuals();
    /// All selected faces and visuals.
    void clearSelections();
    /// At once. Whether the visual, or one that it belongs to, is selected.
    bool isSelected(const Visual* visual) const;
    /// At once; a live reference. It may hold ids whose visuals are gone: test each.
    const std::vector<unsigned>& getSelectedVisuals() const { return selectedVisuals; }
    /// These points of these clouds, by cloud id, and nothing else. A cloud with an empty list is selected as well.
    /// An unknown id fails on the render thread as `GetVisual` does.
    void selectPointCloud(const std::unordered_map<unsigned, std::vector<std::uint64_t>>& indicesOfClouds);
    /// One colour on a body, or on the bodies that are direct children.
    void setVisualColor(unsigned id, float r, float g, float b);
    /// The model's colours on a body, or on the bodies that are direct children.
    void resetColor(unsigned id);
    void resetColor(Visual* visual);
    /// A material under every other look of a body; anything else is passed over.
    void bodyVisualUseMaterial(unsigned id, const std::string& material);
    void bodyVisualUseDefaultMaterial(unsigned id);
    /// Marks all bodies of a visual as touching something; an unknown id is passed over.
    void setCollision(unsigned id, bool on);
    void setCollisionHighlights(const std::vector<unsigned>& ids, bool on);
    void clearAllCollisionContacts();
    /// An unknown id is passed over.
    void setVisualCollisionEmphasizeState(unsigned id, VisualCollisionState state);
    void clearVisualCollisionEmphasizeState(unsigned id);

    // View

    /// At once, render thread. The scene keeps it.
    Camera* createCamera(const std::string& name);
    /// Posted.
    void setCameraPose(const rob::PoseTemplate<float>& pose);
    // The poses below are computed at once, on the render thread; nothing moves. They need a render target.
    /// All bodies in view, the view direction kept.
    rob::PoseTemplate<float> getViewAllPose();
    /// All bodies in view along `dir`, turned there the short way.
    rob::PoseTemplate<float> getViewPoseForDir(const rob::DirTemplate<float>& dir);
    /// All bodies in view along `dir` with `up` upwards in the picture; the two must not be parallel.
    rob::PoseTemplate<float> getViewPoseForDir(const rob::DirTemplate<float>& dir, const rob::DirTemplate<float>& up);
    /// From where the camera stands, towards the origin.
    rob::PoseTemplate<float> getViewCenterPose();
    /// The visual filling the view, the view direction kept; the present pose where there is nothing to see of it.
    rob::PoseTemplate<float> getVisualFocusPose(unsigned id);

    // Picking state: faces. Posted, but for the records of which faces they are, which change at once: call these from
    // one thread.

    void highlightFace(SolidVisual* visual, unsigned face);
    void clearHighlightedFace();
    void selectBaseFace(unsigned id, unsigned face);
    void selectSideFace(unsigned id, unsigned face);
    void clearSelectedFace(unsigned id, unsigned face);
    void clearSelectedFaces();
    bool faceIsSelected(SolidVisual* visual, unsigned face) const;
    /// At once. @throws Standard_OutOfRange "NCollection_IndexedMap::FindKey" past the last face.
    static const TopoDS_Face& GetBodyFace(unsigned id, unsigned face);
    /// At once. The face where it lies in the world.
    static TopoDS_Face GetBodyFaceInWorld(unsigned id, unsigned face);

    // Bodies; posted

    /// The body's solid made anew from another shape, under the same parent and id. What was hidden or selected of the
    /// old one is forgotten. Does nothing where the node has no solid.
    void updateSolidVisual(sdf::SdfNode* node, const TopoDS_Shape& shape);

    // Point clouds; posted

    /// Draws a cloud of the station, a `layout::PointCloud`, under the world.
    void addPointCloud(sdf::SdfNode* node);

private:
    using FaceOfSolid = std::pair<SolidVisual*, unsigned>;

    explicit Scene(const std::string& name);

    void doRemoveVisual(unsigned id);
    void doRemoveTempVisual(unsigned id);
    void doSetVisualVisible(unsigned id, bool visible);
    void doSetColor(unsigned id, float r, float g, float b);
    void doResetColor(Visual* visual);
    void doSelectVisual(unsigned id);
    void doClearSelectedVisuals();
    void doSelectPointCloud(const std::unordered_map<unsigned, std::vector<std::uint64_t>>& indicesOfClouds);
    void selectFace(unsigned id, unsigned face, const char* color);
    void forgetVisual(const Visual* visual);
    void createLights();

    static Scene* Instance;

    std::unique_ptr<SceneCore> core;
    std::vector<std::unique_ptr<Camera>> cameras;
    std::unordered_map<unsigned, Visual*> tempVisuals;
    std::deque<std::function<void()>> loadTasks;
    Visual* highlightedVisual = nullptr;
    std::vector<unsigned> selectedVisuals;
    FaceOfSolid highlightedFace{};
    std::vector<FaceOfSolid> selectedFaces; // in the order of selection
};

} // namespace vrk::visual
