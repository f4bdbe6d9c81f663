#pragma once

#include "selection/geometry/BVHPrimitive.h"
#include "selection/geometry/PrimitiveContainer.h"

#include <atomic>
#include <optional>
#include <string>

namespace vrk::visual {
class Visual;
}

namespace vrk::selection {

/// What a pick knows before it asks an object.
struct PickLimits {
    float nearest;                 ///< the distance of the hit that it has already
    std::optional<float> pixelAt1; ///< the size of a pixel at a distance of 1 from the camera; empty without a view
};

/// What the scene's hierarchy holds for one visual: its box in the world, and in coordinates of its own the parts of it
/// that can be hit.
///
/// A question from the world is moved into the object's coordinates, and the answer is moved back: so a body that moves
/// costs a pose and a box, and its triangles stay as they are. So, too, objects of one geometry have their parts in common,
/// whatever their poses and scales: each has but a list of them.
///
/// Owner: VisualSelection. The visual is not owned and must outlive it.
/// Thread: changed on the render thread; the queries read what the latest `update` settled.
class VRK_EXPORT SelectableObject : public BVHPrimitive, public PrimitiveContainer {
public:
    ~SelectableObject() override;

    enum class ObjectKind : unsigned { Shape = 0, Curve = 1, Mesh = 2, Line = 3, Point = 4, PointCloud = 5 };

    /// Makes the parts, the first time, and takes the pose of the visual. Does nothing while the object is not marked as
    /// dirty. The parts are never made anew: if they must be, remove the object and add it again.
    virtual void update() = 0;
    /// Whether `buildParts` may be called for it, as the next update would have to make the parts: settles what several
    /// objects share first.
    bool preparePartsForAnyThread() { return !built && worldDirty && canBuildOnAnyThread(); }
    /// Makes the parts ahead of the next update. For several objects on as many threads, and nothing else meanwhile.
    void buildParts();
    virtual std::string getDescription() const { return {}; }

    /// False where the ray surely gets no hit that is nearer than the one there is: a quick look, from outside.
    virtual bool mayBeHit(const visual::Ray&, const PickLimits&) const { return true; }
    /// As `intersectRay`, for a caller that has a hit at the distance `limit` already: one that is not nearer may be left
    /// out.
    virtual void intersectRayWithin(Result& result, const visual::Ray& ray, float limit) const;
    /// Whether hits lie within the box of the object and are told by their distance in the world, so that an object whose
    /// box lies beyond a hit need not be asked.
    virtual bool isHitWithinBox() const { return false; }

    /// Around all parts, in the object's coordinates; one that is not valid without any.
    virtual visual::Box partsBox() const { return bvh.root ? bvh.root->box : visual::Box(); }

    rob::PoseTemplate<float> inverseWorldPose; ///< from the world
    visual::Visual* const visual;
    const ObjectKind kind;
    /// May be found by `VisualSelection::sense`. Changes while that asks, on another thread.
    std::atomic<bool> detectable{true};
    bool worldDirty = true; ///< pose and box wait for the next update
    bool priority = false;  ///< a hit ends a pick, whatever lies in front of it
    bool built = false;     ///< the parts are made
    rob::PoseTemplate<float> worldPose;
    rob::Vec3Template<float> worldScale{1, 1, 1}; ///< of the object's coordinates as they are drawn, before the pose
    std::size_t place = 0;                        ///< in the service's container

protected:
    SelectableObject(ObjectKind kind, visual::Visual* visual) : visual(visual), kind(kind) {}

    /// The update of an object whose box is that of its parts.
    void updateFromHierarchy();
    /// Whether the parts are made of the object alone, with no camera and nothing that another object makes as well.
    virtual bool canBuildOnAnyThread() { return false; }
    /// What every update starts with: false if there is nothing to do, else the parts are there.
    bool beginUpdate();
    /// Takes the pose, and the scale with which the visual is drawn.
    void takePose(const rob::PoseTemplate<float>& pose);
    /// Appends the parts. A failure leaves none behind.
    virtual void buildPrimitives() {}
    /// In place of parts and a hierarchy of its own, takes those of `all`, which the derived class keeps alive.
    void borrowParts(const PrimitiveContainer& all);
    void buildHierarchy();
    /// On a hit: fills the visual and brings the position to the world.
    void finish(Result& result) const;

private:
    bool isBorrower = false; // owns none of its parts
};

} // namespace vrk::selection
