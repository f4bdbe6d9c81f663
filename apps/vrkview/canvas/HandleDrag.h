#pragma once

#include "handles/AxisDrag.h"
#include "handles/DragHandle.h"
#include "handles/RingDrag.h"

#include <QPointF>
#include <QString>

#include <variant>

namespace vrkview {

/// A drag of one piece of the handle: along the axis of an arrow or about that of a ring.
///
/// A value: it touches neither model nor scene. Amounts are model units of an arrow and degrees of a ring. Places are device
/// pixels of the view.
class HandleDrag {
public:
    using Handle = vrk::visual::DragHandle::HandleType;

    /// @param handle  an arrow or a ring.
    /// @param at      where the handle stands, in the world.
    HandleDrag(Handle handle, const vrk::visual::CameraSnapshot& camera, const vrk::rob::Posed& at,
               vrk::visual::DragAxes axes, const QPointF& mouse);

    Handle getHandle() const { return handle; }
    bool isLength() const;
    /// How far the mouse has dragged, or why it cannot tell.
    vrk::visual::DragAnswer moveTo(const QPointF& mouse);
    /// Goes on in another view; what has been dragged so far stays. Nothing where the view is the same.
    void changeView(const vrk::visual::CameraSnapshot& camera, const QPointF& mouse);
    /// Where something is after this amount, on what it hangs on.
    /// @param base   of what it hangs on, in the world.
    /// @param start  before the drag, on its base.
    vrk::rob::Posed poseAfter(double amount, const vrk::rob::Posed& base, const vrk::rob::Posed& start) const;
    /// The same for a way in the world, whatever the handle.
    static vrk::rob::Posed PoseAfter(const vrk::rob::Vec3d& way, const vrk::rob::Posed& base,
                                     const vrk::rob::Posed& start);
    const vrk::rob::Posd& getCentre() const { return centre; }
    /// "+12.50 mm", "-3.00°"
    QString textOf(double amount) const;
    /// " mm" of an arrow, "°" of a ring
    static QString UnitOf(Handle handle);

private:
    Handle handle;
    vrk::visual::CameraSnapshot view;
    vrk::rob::Posd centre;
    std::variant<vrk::visual::AxisDrag, vrk::visual::RingDrag> way;
};

} // namespace vrkview
