#pragma once

#include "platform/common/Export.h"
#include "platform/geometry/PointList.h"
#include "scene/core/RenderTaskQueue.h"
#include "scene/core/SceneSettings.h"
#include "scene/math/Color.h"
#include "scene/math/Pose.h"
#include "visual/VisualType.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <source_location>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Ogre {
class ColourValue;
class InstanceManager;
class SceneManager;
} // namespace Ogre
namespace sdf {
class SdfNode;
}
namespace vrk::geometry {
struct MeshEdges;
}
namespace vrk::rob {
class TPCircle;
}
namespace vrk::smartcomp {
class SmartComponent;
}
namespace vrk::task {
class MoveInst;
class Path;
class Task;
} // namespace vrk::task
namespace cadcam {
template <typename T>
class TMesh;
}
class TopoDS_Edge;
class TopoDS_Face;
class TopoDS_Shape;
class TopoDS_Wire;
class gp_Pnt;

namespace vrk::visual {

class BorderMask;
class Camera;
class DepthClearListener;
class Grid;
class GuiVisual;
class SceneCore;
class SolidVisual;
class TcpTraceVisual;
class Visual;
class VisualStateManager;

/// The one object through which an application drives the view.
///
/// Operations that touch OGRE post: they return at once, and their work runs on the render thread in `processMsgs`, in
/// the order of the posts. The library has no thread and no frame loop of its own; the application calls `processMsgs`
/// and then renders. Ids are those of the model's objects; where an id names a parent, 0 is the world.
///
/// A posted task that fails ends `processMsgs`, which throws its exception; the tasks behind it in that batch are dropped. One
/// line in the log names the operation ahead of that. Null pointers and poses that are not finite are refused at the call, with
/// std::invalid_argument, where nothing else is said. Before the start the static operations throw std::logic_error.
///
/// Owner: the library, from `Init` to the end of the process. Thread: each family says; "at once" means that the work is
/// done before the call returns.
class VRK_EXPORT Scene {
public:
    /// Which of two groups, whose collisions are looked at, a visual belongs to.
    enum class VisualCollisionState { None = 0, GroupA = 1, GroupB = 2 };

    /// What is drawn of the bodies. The values are fixed: applications store them.
    enum class DisplayMode {
        Shaded = 0,
        ShadedWithEdges = 1,
        Edges = 2,
        Wire = 3, ///< every triangle, as lines
    };

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
    /// @param from  who posts, for the log; leave it to the compiler.
    void addRenderTask(std::function<void()>&& task, std::uint64_t key,
                       const std::source_location& from = std::source_location::current());
    /// Work for the end of the next station load. Render thread.
    void addLoadTask(std::function<void()> task);
    /// Runs what was posted. The application's render thread. See `RenderTaskQueue::run`.
    void processMsgs();
    /// The same, but a task that fails is told to the handler, and the batch goes on.
    void processMsgs(const RenderTaskQueue::FailureHandler& told);
    /// Asks for one more frame after the present batch. Render thread.
    void instanceDirty();

    // Registry; at once

    /// @throws std::out_of_range "invalid unordered_map<K, T> key" for an unknown id.
    static Visual* GetVisual(unsigned id);
    static bool HasVisual(unsigned id);
    static Visual* GetWorldVisual();
    static VisualStateManager* GetStateManager();
    static Ogre::SceneManager* GetSceneManager();
    /// @throws std::out_of_range "invalid unordered_map<K, T> key" for an unknown name.
    static Ogre::InstanceManager* GetInstanceMgr(const std::string& name);
    void addTempVisual(Visual* visual);
    /// Render thread. The visual and its descendants leave the registry and the selection, and die.
    void deleteVisual(Visual* visual);

    // Removal; posted. An unknown id fails on the render thread as `GetVisual` does.

    void removeVisual(unsigned id);
    /// A visual that was entered by `addTempVisual`.
    void removeTempVisual(unsigned id);
    /// Frees batches of instances in which none is left; each manager keeps the one that it made first.
    void cleanupInstanceBatches();

    // Station load. Posted; the objects must live until the task has run.

    /// Everything in the station, in an order in which later objects find what they hang on, and then the hiding of what
    /// the station says is hidden. Remove what was loaded before.
    static void LoadStation();
    /// Brings the view to the state of the model, whatever was added, removed, exchanged, moved, attached, hidden or coloured
    /// there since: only what differs is touched. What `LoadStation` shows counts, and nothing else: the saved view, bands,
    /// reaches and dimensions are left as they are. A pose or a parent that only the view was told of gives way to the model's.
    ///
    /// What is registered under an id of the model (below 0x80000000) that the model no longer knows goes; own visuals have
    /// transient ids. A body that is exchanged stays hidden or selected, with what is attached to it. What cannot be built is
    /// passed over and named in the log, each with its cause; the rest is done, and then the task fails with
    /// std::runtime_error "SyncStation: <number> could not be shown, the first is <what>: <cause>". It is tried anew by the
    /// next call. The cost is that of looking at each object once: see docs/benchmarks.md.
    ///
    /// Posted; any thread. The visual of a point cloud points to its points: keep a removed cloud until this has run.
    static void SyncStation();
    void addAssembly(sdf::SdfNode* assembly);
    void addPart(sdf::SdfNode* part);
    /// One body of a part that has a visual.
    void addBody(sdf::SdfNode* part, sdf::SdfNode* body);
    /// A manipulator, tool or device; anything else is passed over.
    void addMechanism(sdf::SdfNode* mechanism, bool withChildren);
    /// On the visual of its parent, which must have one unless it is the world.
    void addFrame(sdf::SdfNode* frame);
    void addWObj(sdf::SdfNode* workObject);
    /// Always on the world.
    void addPointCloud(sdf::SdfNode* cloud);
    /// Nothing for a component without a visual.
    void buildVisual(smartcomp::SmartComponent* component);
    /// On the visual of its owner, which must have one.
    void addToolData(unsigned id);
    void updateToolData(unsigned id);
    /// Takes owner and poses of a work object from the model anew.
    void updateWObj(unsigned id);
    /// Deletes the trace that was handed to `setTcpTrace`; without one nothing happens.
    void clearTcpTrace();
    /// At once, render thread. The trace that `clearTcpTrace` deletes; null for none.
    void setTcpTrace(TcpTraceVisual* trace);

    // Attachment and tree; posted. Ids must have visuals, or the render thread fails as `GetVisual` does; a new parent may
    // be 0, the world.

    /// Hangs a visual on another at a pose relative to it. What is attached keeps its own visibility and looks.
    void addAttachment(unsigned child, unsigned parent, const rob::PoseTemplate<double>& pose);
    void deleteAttachment(unsigned child, unsigned oldParent, unsigned newParent,
                          const rob::PoseTemplate<double>& pose);
    void attachVisual(unsigned parent, Visual* child);
    /// Hangs a visual on the world.
    void detachVisual(Visual* visual);
    /// Keeps the local pose: the visual moves with its new parent.
    void reparentVisual(unsigned child, unsigned parent);
    void moveVisualToParent(unsigned child, unsigned parent, const rob::PoseTemplate<float>& worldPose);

    // Copy: a see-through double of one visual at a time. Posted, but for the question.

    /// A kind that is not copied fails on the render thread with "Bad optional access".
    void showCopiedVisual(unsigned id, const rob::PoseTemplate<float>& worldPose);
    void hideCopiedVisual();
    void deleteCopiedVisual();
    bool isCopiedVisualVisible() const;

    // Pose; posted. Unknown ids are passed over, but for the orientations and the local origin.

    void setVisualPose(unsigned id, const rob::PoseTemplate<float>& pose);
    void setVisualWorldPose(unsigned id, const rob::PoseTemplate<float>& pose);
    void setVisualWorldPose(Visual* visual, const rob::PoseTemplate<float>& pose);
    /// @param orientations  as many as ids, else std::invalid_argument. An unknown id fails, with the visuals before it turned.
    void setVisualsOrientations(std::vector<unsigned> ids, std::vector<rob::OrientTemplate<double>> orientations);
    /// Moves a visual's own frame and leaves what it shows where it is: `delta` is the old frame seen from the new one.
    void setLocalOrigin(unsigned id, const rob::PoseTemplate<float>& oldOriginWorld,
                        const rob::PoseTemplate<float>& delta);

    // Visibility; posted

    /// Shows or hides a visual with its children, and with it its part in picking. The members of a group for its id; a
    /// group that is reached again, be it by itself, is not entered again. An id that the model does not know is passed
    /// over without a post.
    void setVisualVisible(unsigned id, bool visible);

    // Frames; posted

    /// How long the axes of all frames of a kind are. Without a frame of that kind in the scene nothing happens, else the
    /// next frames are built in that size too; in that the size of tool frames counts for plain ones, and that of joint
    /// targets for robot targets.
    void setFrameSize(unsigned size, VisualType type);
    /// How long the axes of robot targets and joint targets are, those that are there and those to come. Posted.
    void setTargetSize(unsigned size);
    void setFrameVisualVisible(bool visible);
    void setTcpVisualVisible(bool visible);
    /// Robot targets; joint targets stay as they are.
    void setTargetVisualVisible(bool visible);
    /// Whether targets are drawn, and picked, by their z axis alone. The setting changes at once; the targets that are
    /// there follow by a post, unless targets are switched off.
    void setDrawTargetZAxisOnly(bool zAxisOnly);
    /// Work objects, with the frames in them.
    void setWObjVisualVisible(bool visible);
    void addTaskFrame(unsigned id, const rob::PoseTemplate<double>& pose);

    // Appearance. Posted, but for the records of what is highlighted, which change at once: call these from one thread.
    // What clears a look also clears what kept its look because a failure took the end of it along with its batch.

    /// Nothing for a visual that is highlighted already; a selected one shows no highlight, but the old one goes. Whether
    /// it is selected is asked on the caller's thread.
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
    /// At once, render thread, or any thread while that is idle. Whether the visual, or one that it belongs to, is
    /// selected.
    bool isSelected(const Visual* visual) const;
    /// As `isSelected`; a live reference. It may hold ids whose visuals are gone: test each.
    const std::vector<unsigned>& getSelectedVisuals() const;
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
    /// The bodies of a visual, and below it, in the materials that the model names for them, and their edges in that of edges:
    /// for arms of no known maker, which come in one plain colour. Posted.
    void bodiesUseOwnMaterials(unsigned id);
    /// Marks all bodies of a visual as touching something; an unknown id is passed over.
    void setCollision(unsigned id, bool on);
    void setCollisionHighlights(const std::vector<unsigned>& ids, bool on);
    void clearAllCollisionContacts();
    /// An unknown id is passed over.
    void setVisualCollisionEmphasizeState(unsigned id, VisualCollisionState state);
    void clearVisualCollisionEmphasizeState(unsigned id);

    // Environment. Lights, grid and outline at once, on the render thread; lights are counted from 1 to 4.

    void setAmbientLight(const Ogre::ColourValue& colour);
    /// @throws Ogre::Exception for an unknown light, as the three below.
    void setLightDiffuse(int index, float r, float g, float b);
    void setLightSpecular(int index, float r, float g, float b);
    /// The way towards the light, in the world.
    void setLightDir(int index, float x, float y, float z);
    void setLightEnable(int index, bool enable);
    /// Makes the grid, once. Nothing hides it or takes it away: `false` does nothing, on purpose.
    void setGrid(bool on);
    /// Shows or hides the grid, as `setGrid` does not; one that is to be shown is made where there is none. Posted.
    void setGridVisible(bool visible);
    /// At once, render thread.
    bool isGridVisible() const;
    /// The up axis of grid and camera: 0 for x, 1 for y, 2 for z. The setting changes at once, the rest is posted.
    void setGridNormalDir(int dir);
    // 0 without a grid; the length in model units
    static unsigned GetGridCellCount();
    static unsigned GetGridCellLength();
    /// Posted. Shows and hides solids and wire frames, which picking is not told of; where solids are shown their hidden
    /// faces come back. An unknown value does nothing.
    void setDisplayMode(DisplayMode mode);
    /// The outline around selected bodies. Nothing happens while the camera has no render target.
    void setBorderHighlightEnabled(bool enable);

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
    /// Posted. Shows or hides the mark of a pivot, and moves it there in either case. What the camera orbits about is
    /// not its matter: see `Camera::setOrbitPivot`.
    void setOrbitPivotVisible(bool visible, const rob::PoseTemplate<float>& pose);

    // Picking state: faces. Posted, but for the records of which faces they are, which change at once: call these from
    // one thread.

    /// @throws Standard_OutOfRange "NCollection_IndexedMap::FindKey" past the last face, at once; nothing is changed then.
    ///         Face 0 is recorded, and shows nothing.
    void highlightFace(SolidVisual* visual, unsigned face);
    void clearHighlightedFace();
    /// @throws as `highlightFace`, and as `GetVisual` for an unknown id.
    void selectBaseFace(unsigned id, unsigned face);
    void selectSideFace(unsigned id, unsigned face);
    void clearSelectedFace(unsigned id, unsigned face);
    void clearSelectedFaces();
    bool faceIsSelected(SolidVisual* visual, unsigned face) const;
    /// At once. @throws Standard_OutOfRange "NCollection_IndexedMap::FindKey" past the last face.
    static const TopoDS_Face& GetBodyFace(unsigned id, unsigned face);
    /// At once. The face where it lies in the world.
    static TopoDS_Face GetBodyFaceInWorld(unsigned id, unsigned face);

    // Picking state: edges, with the same proviso

    void highlightEdge(Visual* visual, const TopoDS_Edge& edge);
    void clearHighlightedEdge();
    /// This generated edge, and nothing else.
    void selectGeneratedEdge(unsigned id, const TopoDS_Edge& edge);

    // Edges and curves; posted. Generated edges lie under the visual of `id`, and are found by the same shape, location and
    // orientation; where there is none, nothing happens.

    // Of a visual that is no curve, nothing.
    void addCurveArrow(unsigned id, bool forward);
    void clearCurveArrow(unsigned id);
    void addEdgeArrow(unsigned id, const TopoDS_Edge& edge, bool forward);
    void clearEdgeArrow(unsigned id, const TopoDS_Edge& edge);
    /// An edge without polygon is not drawn.
    void addGeneratedEdge(unsigned id, const TopoDS_Edge& edge);
    void removeGeneratedEdge(unsigned id, const TopoDS_Edge& edge);

    // Bodies; posted

    /// The body's solid made anew from another shape, under the same parent and id. What was hidden or selected of the
    /// old one is forgotten. Does nothing where the node has no solid.
    void updateSolidVisual(sdf::SdfNode* node, const TopoDS_Shape& shape);
    /// Draws a body that is a mesh with its edges, in place of those that it has, as solids are drawn with theirs: whatever shows or
    /// hides the edges of solids shows and hides these. Bodies that are given the same edges share one buffer. They are passed
    /// over where there are none, where the id is that of no mesh, and where the mesh has another number of vertices or
    /// triangles than they were taken from. They go with the visual, and when it draws another mesh: a body that is made anew,
    /// as by `SyncStation` where it was exchanged, is to be given them again. Null is refused.
    void addMeshEdges(unsigned body, std::shared_ptr<const geometry::MeshEdges> edges);
    /// Lets a spray paint a visual: each body of it and below it gets a skin, or the one that it has learns of one spray more.
    /// Bodies without triangles are passed over, and so is an id without a visual, in these three.
    void createPaintVisual(unsigned spray, unsigned id);
    /// At once, render thread.
    void doCreatePaintVisual(unsigned spray, unsigned id);
    /// Takes a spray from the skins there. One that knows of a single spray goes, whichever that is.
    void removePaintVisual(unsigned spray, unsigned id);
    /// What the skins there keep as their paint's colour; what is drawn are the colours of their vertices.
    void setPaintColor(unsigned id, float r, float g, float b);
    /// At once, render thread.
    void doSetPaintColor(unsigned id, float r, float g, float b);
    /// Draws a mesh under a visual or, for 0, in the world, for a look at it: one at a time, which is deleted through its
    /// parent. The mesh must live until the task has run.
    void debugViewCamMesh(cadcam::TMesh<double>* mesh, unsigned parentId);

    // Robot programs. Posted, but for what is said to be at once. The visuals follow the model when they are told: what is
    // read of it at the call must stay as it is until the task has run. Where an id must have a visual, one that has none
    // fails on the render thread as `GetVisual` does.

    void addTask(unsigned id);
    /// At once, render thread: the work objects, tool data and paths of a program. An id that is no task is passed over.
    void buildTask(unsigned id);
    /// A path and its moves, whose work objects must have visuals: this is looked up at once.
    /// @throws std::out_of_range as `GetVisual` does, at once, with nothing posted.
    void addPath(task::Path* path);
    /// The moves of a path, which must all have visuals, and then the path. An id that is no path is passed over.
    void removePathVisual(unsigned id);
    /// Shows where the targets of a path are now: they are moved, its arrows and lines are made anew. A path without moves,
    /// or unknown to the model, stays as it is; moves without visuals are passed over.
    void updatePath(unsigned id);
    /// These in one task.
    void updatePaths(std::vector<unsigned> ids);
    /// The same for one move and its arrow, and all lines of its path.
    void updateInstruction(unsigned id);
    /// At once, render thread.
    /// @throws std::bad_optional_access "Bad optional access" if no move visual has that id.
    void doUpdateInstruction(unsigned id);
    /// Hangs the visual of a move elsewhere; its pose in its parent stays.
    /// The spelling is part of the interface and stays.
    void upadateInstructionParent(unsigned id, unsigned parentId);
    /// Without an arrow, and without a change of the lines: both come with the next update.
    void buildMoveInstruction(task::MoveInst* move);
    /// Moves with the one before, which may be null, and the id of the visual to hang on; then the lines of the path of the
    /// last one.
    void buildMoveInstructions(std::vector<std::tuple<task::MoveInst*, task::MoveInst*, unsigned>>&& moves);
    // What is drawn of all programs. The settings change at once. Call them on a real change only: arrows or targets that
    // are switched on when they are there are made a second time, beside the first.
    void setDrawPathArrow(bool draw);
    /// Reads the registry at once.
    void setDrawSegVisual(bool draw);
    void setDrawTargetVisual(bool draw);
    /// The band of a manufacturing shape, registered under its id, on the visual of the body whose edges it runs
    /// along; in place of one that is there. An id that is no such shape is passed over, and one on a body without a visual.
    /// What cannot be drawn, as a tool direction along its edge, is not: the log tells why.
    void addBand(unsigned id);

    // Previews: what is shown for a while and belongs to no station. Posted. What a pointer points to is the caller's and must
    // live until the task has run, but for lists of points, which are the scene's from the call on. Four lists hold the
    // previews, each until its `remove`; what hangs on a visual goes with that before. An edge without polygon is not drawn,
    // nor is a curve of fewer than two points; an id without a visual fails on the render thread as `GetVisual` does.

    // Edges and curves, in one list. Edges lie over everything else, at `pose` in the world.

    /// One more.
    void previewEdge(const TopoDS_Edge& edge, const rob::PoseTemplate<float>& pose);
    /// These, in place of the whole list.
    void previewEdges(std::vector<TopoDS_Edge>* edges, const rob::PoseTemplate<float>& pose);
    void previewWire(const TopoDS_Wire& wire, const rob::PoseTemplate<float>& pose);
    /// The same for wires, with an arrow on the first edge of each that is drawn.
    void previewCurves(std::vector<TopoDS_Wire>* wires, const rob::PoseTemplate<float>& pose);
    /// One visual more for each curve, where the visual of that id stands now.
    void addPreviewCurves(unsigned id, geometry::PointList* list);
    /// One visual more for all curves of the list, there or, for id 0, in the world; with an arrow at the first point. One
    /// without direction fails with "0-length vector cannot be normalized."; the curves are there then.
    void addPreviewCurvesWithDirection(unsigned id, geometry::PointList* list,
                                       const rob::Vec3Template<float>& direction);
    /// @param curveId  by which `removePreviewCurve` knows it; it is not registered.
    void addPreviewCurvesWithDirection(unsigned id, geometry::PointList* list,
                                       const rob::Vec3Template<float>& direction, unsigned curveId);
    /// The first one of that id; without one nothing happens.
    void removePreviewCurve(unsigned id);
    void removePreviewCurves();
    /// The size of the arrows on previewed curves, those that are there and those to come by
    /// `addPreviewCurvesWithDirection`; 5 is that of the mesh. Others have that of the mesh.
    void setArrowSizeLevel(unsigned level);

    // Faces of a body, in place of those that are there. An id of no solid fails with "Bad optional access".

    void previewFace(const TopoDS_Face& face, unsigned id);
    void previewFaces(std::vector<TopoDS_Face> faces, unsigned id);
    void removePreviewFaces();

    // Points and targets, in one list

    /// These more, in the frame of the visual of that id, which may not be 0.
    void previewPoints(std::vector<gp_Pnt>* points, unsigned id, const rob::ColorTemplate<float>& color);
    /// These, in the world, in place of the whole list.
    void previewTargets(const std::vector<rob::PoseTemplate<float>>& poses);
    void removePreviewedPoints();

    /// Segments under the visual of that id, which may not be 0. They stand in no list, and go with that visual.
    void previewTriangleMesh(std::vector<std::pair<rob::PosTemplate<float>, rob::PosTemplate<float>>>* segments,
                             unsigned id);

    // Polylines, under a visual or, for 0, the world

    /// @param arrow  whether one stands at the first point, directed to the second. Where both are equal that fails with
    ///        "0-length vector cannot be normalized.", and the polyline stays, in no list.
    void drawPolyline(const std::vector<rob::PosTemplate<float>>& points, unsigned parentId, bool arrow);
    void drawPolylines(const std::vector<std::vector<rob::PosTemplate<float>>>& lines, unsigned parentId, bool arrow);
    void removePolylines();

    // Previewed frames and joint; posted. The ids are the application's own; one that is unknown fails on the render thread
    // with "invalid unordered_map<K, T> key".

    /// A hidden frame, with one dash or three for each axis. One that had the id stays in the scene, unknown.
    void createPreviewedFrameVisual(unsigned id, bool single);
    void setPreviewedFrameVisible(unsigned id, const rob::PoseTemplate<double>& pose);
    void setPreviewedFrameInvisible(unsigned id);
    void removePreviewedFrameVisual(unsigned id);
    /// The axis of a joint, hidden. One that is there stays in the scene, unknown.
    void createPreviewedJointVisual();
    /// Equal points fail with "0-length vector cannot be normalized."
    void setPreviewedJointVisible(const rob::PosTemplate<double>& from, const rob::PosTemplate<double>& to);
    void setPreviewedJointInvisible();
    /// Asks on the caller's thread whether there is one; nothing is posted where there is none.
    void removePreviewedJointVisual();
    /// All that marks a position, taken to be the previewed frames and the previewed joint.
    void removeAllPositionVisuals();

    // Dimensions and reach; posted. Dimensions draw the lines of a measure and not its number; places are in the world, angles
    // are radians.

    void createDistanceVisual(const rob::PosTemplate<double>& a, const rob::PosTemplate<double>& b);
    /// Two legs from `apex`, and an arc from the shorter one, unless the angle is 0. An arc between legs on one line fails
    /// with "0-length vector cannot be normalized."; nothing is drawn then.
    void createAngleVisual(const rob::PosTemplate<double>& apex, const rob::PosTemplate<double>& b,
                           const rob::PosTemplate<double>& c, double angle);
    /// The sweep that the circle stores, and a radius.
    void createDiameterVisual(const rob::TPCircle& circle);
    /// All of them.
    void removeDimensionVisual();
    /// How far an arm reaches: a curve, shown under the visual of `frameId`, and the surface that it sweeps as it turns about
    /// z from one angle to the other, hidden under the arm. Nothing for a frame without a visual. What the arm had of both
    /// stays in the scene, unknown: remove it before. An id of no arm fails with "Bad optional access".
    /// @param normals  of the surface, one for each point.
    void addWorkEnvelopeVisual(unsigned manipulatorId, unsigned frameId,
                               const std::vector<rob::PosTemplate<double>>& points,
                               const std::vector<rob::DirTemplate<double>>& normals, float from, float to);
    /// Shows and hides curve and surface. An id without an arm fails with "Bad optional access", also at the removal.
    void updateWorkEnvelopeVisual(unsigned manipulatorId, bool show2D, bool show3D);
    void removeWorkEnvelopeVisual(unsigned manipulatorId);

    // Handles; posted. A handle must live until the task has run.

    /// Hangs a handle on a visual, at a pose relative to it. When that visual is removed by its id, or one above it, the
    /// handle attached last is taken off and disabled for picking; others die with what they hang on, but for those that
    /// start-up makes. An id without a visual fails on the render thread as `GetVisual` does.
    void attachGuiTo(GuiVisual* gui, unsigned id, const rob::PoseTemplate<float>& pose);
    void attachGuiTo(GuiVisual* gui, Visual* target, const rob::PoseTemplate<float>& pose);
    /// Takes a handle off; whether it can be picked stays as it is.
    void detachGui(GuiVisual* gui);
    /// The size of all handles that keep theirs on the screen, as a factor; one below 0.5 or above 10 counts as 1. The
    /// setting changes at once.
    void setHandleScale(float scale);
    void showDragHandle();
    void hideDragHandle();
    void resetDragHandle();
    /// Shows the directions of U and V in the middle of a face, in the world. A face without a surface leaves the mark as it
    /// is, and the log says so; one that is degenerate fails on the render thread with "0-length vector cannot be
    /// normalized."
    void showUVIndicatorVisual(const TopoDS_Face& face);
    void hideUVIndicatorVisual();
    void deleteUVIndicatorVisual();

private:
    friend class StationSync;

    /// What the parts of a sync share: `attempt` runs some work, and notes what it was and the cause where it fails; `remove`
    /// takes a visual away and leaves what stands by itself on the world.
    struct SyncSteps {
        std::function<void(const std::string& what, const std::function<void()>& work)> attempt;
        std::function<void(unsigned id)> remove;
    };

    explicit Scene(const std::string& name);

    void addVisualTask(const Visual* visual, std::function<void()> task,
                       const std::source_location& from = std::source_location::current());
    void addEndOfLook(const Visual* visual, std::function<void()> task);
    void doRemoveVisual(unsigned id);
    /// What draws the bands on a visual again when another has taken its place.
    std::function<void()> keepBands(const Visual& carrier);
    void doLoadStation();
    static void doSyncTask(const task::Task& task, const SyncSteps& steps);
    void doBuildVisual(smartcomp::SmartComponent* component);
    void doAddToolData(unsigned id);
    void doAddAttachment(unsigned child, unsigned parent, const rob::PoseTemplate<double>& pose);
    void doDeleteAttachment(unsigned child, unsigned oldParent, unsigned newParent,
                            const rob::PoseTemplate<double>& pose);
    void doMoveVisualToParent(unsigned child, unsigned parent, const rob::PoseTemplate<float>& worldPose);
    void doShowCopiedVisual(unsigned id, const rob::PoseTemplate<float>& worldPose);
    void doDeleteCopiedVisual();
    void doSetLocalOrigin(unsigned id, const rob::PoseTemplate<float>& oldOriginWorld,
                          const rob::PoseTemplate<float>& delta);
    void doSetVisualVisible(unsigned id, bool visible);
    void doSetFramesSize(unsigned size, VisualType type);
    void doSetColor(unsigned id, float r, float g, float b);
    void doResetColor(Visual* visual);
    void doRemovePaintVisual(unsigned spray, unsigned id);
    void doSelectVisual(unsigned id);
    void doClearSelectedVisuals();
    void doSetVisible(const std::function<bool(const Visual&)>& test, bool visible);
    void selectFace(unsigned id, unsigned face, const char* color);
    void doRemovePreviewedFrameVisual(unsigned id);
    void doRemovePreviewedJointVisual();
    void doCreateAngleVisual(const rob::PosTemplate<double>& apex, const rob::PosTemplate<double>& b,
                             const rob::PosTemplate<double>& c, double angle);
    void doRemoveDimensionVisual();
    void doAddWorkEnvelopeVisual(unsigned manipulatorId, unsigned frameId,
                                 const std::vector<rob::PosTemplate<double>>& points,
                                 const std::vector<rob::DirTemplate<double>>& normals, float from, float to);
    void createLights();

    static SceneCore& started();

    static Scene* Instance;

    std::unique_ptr<SceneCore> core;
    std::unique_ptr<DepthClearListener> depthClearListener;
    std::unique_ptr<BorderMask> borderMask;
    std::unique_ptr<Grid> grid;
    std::vector<std::unique_ptr<Camera>> cameras;
};

} // namespace vrk::visual
