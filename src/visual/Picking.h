#pragma once

class TopoDS_Shape;

namespace vrk::visual {

class PointCloudVisual;
class PointVisual;
class CurveVisual;
class InstanceFrameVisual;
class LineVisual;
class SolidVisual;
class Visual;

/// What the visuals tell the picking service. The service itself stands above them: only the source behind this header
/// knows it. Without a service, before `vrk::selection::Init`, nothing happens.
///
/// Thread: render thread.
namespace picking {

/// The pose of this visual, and so of its subtree, changed.
void markDirty(Visual* visual);
void addShape(const TopoDS_Shape& shape, SolidVisual* visual, bool detectable);
void addCurveVisual(const TopoDS_Shape& shape, CurveVisual* visual, bool detectable);
void addMeshVisual(Visual* visual, bool detectable, bool priority);
void addPointVisual(PointVisual* visual, bool detectable);
void addPointCloudVisual(PointCloudVisual* visual, bool detectable);
/// The set of points that the cloud hides changed.
void setHiddenPoints(PointCloudVisual* visual);
/// Forgets this visual, if it is known, but not its descendants.
void removeObject(Visual* visual);
void addLineVisual(LineVisual* visual);
void addFrameVisual(InstanceFrameVisual* visual);
/// Forgets this visual and its descendants.
void removeCompoundObject(Visual* visual);
void setObjectEnabled(Visual* visual, bool enabled);
void setCompoundObjectEnabled(Visual* visual, bool enabled);
/// The set of faces that the solid shows changed. One that cannot be picked stays so.
void updateShapeFaces(SolidVisual* visual);

} // namespace picking
} // namespace vrk::visual
