#pragma once

#include "platform/common/Export.h"

#include <atomic>
#include <unordered_map>
#include <vector>

class TopoDS_Shape;

namespace vrk::visual {
class PointCloudVisual;
class PointVisual;
class CurveVisual;
class LineVisual;
class SolidVisual;
class Visual;
} // namespace vrk::visual

namespace vrk::selection {

/// Creates the picking service. The application calls it before `vrk::visual::Init`: visuals register as they are made.
VRK_EXPORT void Init();
/// Does nothing; the service lives until the process ends.
VRK_EXPORT void Finish();

/// Knows which visuals can be picked, and whether what it knows is up to date.
///
/// Any change of registration, of enablement or of a pose makes it dirty; `update` makes it clean again. The library never
/// calls `update` by itself.
///
/// Thread: render thread; the dirty flag may be read from any.
class VRK_EXPORT VisualSelection {
public:
    /// Null before `vrk::selection::Init`.
    static VisualSelection* Get();

    // Registration. A visual that is registered already stays as it is, its flags included.
    void addShape(const TopoDS_Shape& shape, visual::SolidVisual* visual, bool detectable);
    void addCurveVisual(const TopoDS_Shape& shape, visual::CurveVisual* visual, bool detectable);
    /// Registers every mesh or paint visual among this one and its descendants.
    void addMeshVisual(visual::Visual* visual, bool detectable, bool priority);
    void addPointVisual(visual::PointVisual* visual, bool detectable);
    void addPointCloudVisual(visual::PointCloudVisual* visual, bool detectable);
    /// Detectable.
    void addLineVisual(visual::LineVisual* visual);
    /// The visual must be registered.
    void removeObject(visual::Visual* visual);
    void removeCompoundObject(visual::Visual* visual);
    /// Registers the solid anew, with its detectable flag kept and the other flags back at their defaults.
    void updateShapeFaces(visual::SolidVisual* visual);

    // State; visuals that are not registered are passed over
    void enableObject(visual::Visual* visual) { setObjectEnabled(visual, true); }
    void disableObject(visual::Visual* visual) { setObjectEnabled(visual, false); }
    void setObjectEnabled(visual::Visual* visual, bool enabled);
    void setCompoundObjectEnabled(visual::Visual* visual, bool enabled);
    /// Does not make the service dirty.
    void setDetectable(visual::Visual* visual, bool detectable);
    /// Notes that this visual and its descendants moved.
    void markDirty(visual::Visual* visual);
    bool hasVisual(visual::Visual* visual) const { return objects.contains(visual); }
    /// In no order.
    std::vector<visual::Visual*> registeredVisuals() const;
    bool isEnabled(visual::Visual* visual) const;
    bool isDetectable(visual::Visual* visual) const;
    bool isDirty() const { return dirty; }

    /// Brings what it knows up to date and raises `snapResultInvalidated`; does nothing if it is clean.
    void update();

    /// In the interface for callers that mark their threads; the discipline is by convention, and both do nothing.
    void MarkRenderThread() {}
    void checkThread() {}

private:
    struct Registered {
        bool enabled = true;
        bool detectable = false;
        bool priority = false; // wins a pick against everything that is not
        bool worldDirty = true;
    };

    void enter(visual::Visual* visual, bool detectable, bool priority);
    const Registered& registered(visual::Visual* visual) const;

    std::unordered_map<visual::Visual*, Registered> objects;
    std::atomic<bool> dirty{false};
};

} // namespace vrk::selection
