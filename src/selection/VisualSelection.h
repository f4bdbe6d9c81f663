#pragma once

#include "platform/common/Export.h"
#include "selection/geometry/PrimitiveContainer.h"
#include "selection/geometry/Result.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <shared_mutex>
#include <unordered_map>
#include <vector>

namespace vrk::visual {
class PointCloudVisual;
class PointVisual;
class CurveVisual;
class InstanceFrameVisual;
class LineVisual;
class SolidVisual;
class Visual;
} // namespace vrk::visual

namespace vrk::selection {

class SelectableObject;
struct RegionAnswer;
struct RegionQuery;
struct RegionView;

/// Numbers of points by the id of the cloud's visual.
using PointsOfClouds = std::unordered_map<unsigned, std::vector<std::uint64_t>>;

/// Creates the picking service. The application calls it before `vrk::visual::Init`: visuals register as they are made.
VRK_EXPORT void Init();
/// Does nothing; the service lives until the process ends.
VRK_EXPORT void Finish();

/// The one picking service: it knows which visuals can be picked, and answers what lies under a pixel and what a segment or
/// a triangle touches.
///
/// Any change of registration, of enablement or of a pose makes it dirty, and a dirty service answers nothing; `update`
/// makes it clean again. The library never calls `update` by itself: the application does, before it asks.
///
/// Owner: the process. Thread: render thread. The dirty flag may be read from any, and `setDetectable` be called from any.
/// The queries may be asked from another thread while the flag is clear, under `holdStill`, or where the caller sees to it that
/// the render thread is neither in `update` nor in `Scene::processMsgs` meanwhile, whose tasks may take away what a query is just
/// looking at.
class VRK_EXPORT VisualSelection {
public:
    VisualSelection();
    ~VisualSelection();
    VisualSelection(const VisualSelection&) = delete;
    VisualSelection& operator=(const VisualSelection&) = delete;

    /// Null before `vrk::selection::Init`.
    static VisualSelection* Get();

    // Registration. A visual that is registered already stays as it is, its flags included.
    void addShape(const TopoDS_Shape& shape, visual::SolidVisual* visual, bool detectable);
    void addCurveVisual(const TopoDS_Shape& shape, visual::CurveVisual* visual, bool detectable);
    /// Registers every mesh or paint visual among this one and its descendants.
    /// @param priority  a hit wins a pick against all that has no priority, also against what lies in front.
    void addMeshVisual(visual::Visual* visual, bool detectable, bool priority);
    void addPointVisual(visual::PointVisual* visual, bool detectable);
    void addPointCloudVisual(visual::PointCloudVisual* visual, bool detectable);
    /// Detectable.
    void addLineVisual(visual::LineVisual* visual);
    /// Detectable.
    void addFrameVisual(visual::InstanceFrameVisual* visual);
    // What is not registered is passed over
    void removeObject(visual::Visual* visual);
    void removeCompoundObject(visual::Visual* visual);
    /// Registers the solid anew, with its detectable flag kept and the other flags back at their defaults. What hangs on it
    /// stays registered as it is.
    void updateShapeFaces(visual::SolidVisual* visual);
    /// Takes over which of its points the cloud hides; no query finds those. What was made of the cloud stays, so that the
    /// next update is a quick one.
    void setHiddenPoints(visual::PointCloudVisual* visual);

    // State; visuals that are not registered are passed over
    void enableObject(visual::Visual* visual) { setObjectEnabled(visual, true); }
    void disableObject(visual::Visual* visual) { setObjectEnabled(visual, false); }
    void setObjectEnabled(visual::Visual* visual, bool enabled);
    void setCompoundObjectEnabled(visual::Visual* visual, bool enabled);
    /// Whether `sense` finds it; `select` does either way. Does not make the service dirty. Any thread, under the same
    /// proviso as a query; one that is under way may go by either value.
    void setDetectable(visual::Visual* visual, bool detectable);
    /// Of all lines at once.
    void setLineEnabled(bool enabled);
    /// Notes that this visual and its descendants moved: from now on their poses in the world are read anew.
    void markDirty(visual::Visual* visual);
    bool hasVisual(visual::Visual* visual) const { return objects.contains(visual); }
    /// @throws std::out_of_range "invalid unordered_map<K, T> key" for one that is not registered.
    SelectableObject* getObject(visual::Visual* visual) const;
    /// In no order.
    std::vector<visual::Visual*> registeredVisuals() const;
    bool isEnabled(visual::Visual* visual) const;
    bool isDetectable(visual::Visual* visual) const;
    bool isDirty() const { return dirty; }

    /// The hierarchy over all objects but clouds, and that over the clouds, as of the latest update: for queries that stand
    /// beside the ones below. Null without objects.
    const BVHNode* getObjectTree() const { return containers[0].getRoot(); }
    const BVHNode* getCloudTree() const { return containers[clouds].getRoot(); }
    /// Whether anything in the first one has priority: without, what lies behind a hit need not be asked.
    bool hasObjectsOnTop() const { return anyOnTop; }

    /// Brings what it knows up to date and raises `snapResultInvalidated`; does nothing if it is clean. A failure leaves it
    /// dirty. A hierarchy is built anew only where one that is enabled came, went, or has another box: a handle that is
    /// disabled, and is scaled ahead of each picture, costs no more than its own boxes.
    void update();
    /// The part of `update` that makes what is new and moves what moved; the service stays dirty.
    void updateWorldBoxes();

    // Queries. A dirty service answers with a default result.

    /// What lies under a pixel, counted from the top left corner of the main camera's view; clouds are not looked at.
    ///
    /// The first hit with priority, else the nearest one. Without a hit, `position` is where the pixel's ray meets the plane
    /// of the grid, be it behind the camera; the origin where they are parallel.
    Result select(float x, float y) const;
    /// The same for a ray of the caller's, in world coordinates and with a direction of unit length.
    Result select(const visual::Ray& ray) const;
    /// The nearest cloud point under a pixel, and nothing else.
    Result selectPointInCloud(float x, float y) const;
    Result selectPointInCloud(const visual::Ray& ray) const;
    /// Whether a segment or a triangle, in world coordinates, touches something detectable: the first that is found, not
    /// the nearest. Only solids and meshes are. Of a dirty service the answer is not valid.
    /// @throws std::overflow_error "0-length vector cannot be normalized." for a segment of no length.
    Result sense(const rob::LineTemplate<float>& line) const;
    /// @throws std::logic_error "Two triangles are on the same plane" as `Math::Intersect` does.
    Result sense(const rob::TriangleTemplate<float>& triangle) const;

    // What a region of the view encloses, in pixels from the top left corner of the main camera's view, as it is now.
    // A dirty service answers with nothing, and so it does without a camera that has pixels.

    /// The visuals, but for clouds, whose boxes in the world are not outside of a rectangle: their geometry is not looked
    /// at, and what lies behind others or behind the camera counts.
    std::vector<visual::Visual*> boxSelect(float x1, float y1, float x2, float y2) const;
    /// The points inside a rectangle, by the id of the cloud's visual and ascending. A cloud without one has no entry.
    PointsOfClouds boxSelectPointCloud(float x1, float y1, float x2, float y2) const;
    /// The points inside a polygon, in no order. A cloud that is covered in part has an entry even if no point is inside.
    /// One that lies inside with all of its box has an entry without a number: all of its points are meant.
    PointsOfClouds lassoSelectPointCloud(const std::vector<rob::PosTemplate<float>>& polygon) const;
    /// The same, whether or not the polygon is convex.
    PointsOfClouds convexSelectPointCloud(const std::vector<rob::PosTemplate<float>>& polygon) const;

    /// What a region of a view holds: bodies, faces, edges, frames and points of clouds, as `RegionQuery` tells it. What
    /// has priority, as handles have, is left out, and so is what is disabled.
    ///
    /// Any thread, at any time: while it runs, what changes the service waits for its end, so neither an object nor what it
    /// was made of goes away under it. It is shared out to all cores.
    /// @throws std::invalid_argument "a region needs at least three corners", "a corner of the region is not finite", "the
    ///         window of depth is not a number", "the view has no pixels", "the view is not finite".
    /// @throws std::logic_error "the selection is not up to date" while the service is dirty.
    RegionAnswer askRegion(const RegionQuery& query, const RegionView& view) const;

    /// Keeps what questions read as it is: while the lock is held, `update` waits, and so does whatever registers, removes,
    /// shows or hides a visual that can be picked, its deletion too. For `PickQuery`, `selectPointInCloud` and `sense`
    /// from any thread at any time: ask `isDirty` once it is held. A visual that moves meanwhile still makes the service dirty, and
    /// a question then answers as it does of a dirty one. A result's visual is there as long as the lock; keep ids, or what
    /// `ModelOf` gives. The render thread may have to wait: hold it for one question, not for an afternoon.
    ///
    /// `select` reads single points where their nodes stand at that moment: with such in the station it wants the render thread
    /// out of `processMsgs`, lock or no lock.
    ///
    /// Not with `askRegion` under it, which holds its own, and not on the render thread.
    [[nodiscard]] std::shared_lock<std::shared_mutex> holdStill() const { return std::shared_lock(access); }

    /// Both do nothing. They are for callers that want to mark which of their threads ask questions; nothing is checked.
    static void MarkRenderThread();
    void checkThread();

private:
    static constexpr unsigned clouds = 1; // the container of the clouds; all else is in 0

    void enter(SelectableObject* object, bool detectable);
    static unsigned containerOf(const SelectableObject& object);
    /// Removal leaves gaps, so that the removal of many does not move the others each time.
    void closeGaps();
    void buildPartsOnAllCores();
    void updateObjects();
    void updateObject(SelectableObject& object);
    SelectableObject* find(visual::Visual* visual) const;

    std::unordered_map<visual::Visual*, SelectableObject*> objects;
    std::array<PrimitiveContainer, 2> containers; // own the objects
    std::array<bool, 2> stale{};                  // the hierarchies that are to be built anew
    bool anyOnTop = false;
    // Shared by the questions that any thread may ask at any time, and alone with what changes what they read.
    mutable std::shared_mutex access;
    std::atomic<bool> dirty{false};
};

} // namespace vrk::selection
