#pragma once

#include "canvas/InputEvent.h"

#include "handles/AxisDrag.h"
#include "handles/DragHandle.h"
#include "handles/RingDrag.h"

#include <QObject>
#include <QString>

#include <optional>
#include <variant>

class QLabel;

namespace vrkview {

class ViewState;
class ViewWidget;

/// Moves the selected thing by hand: a handle stands on it, whose arrows move and whose rings turn it.
///
/// The thing follows the mouse, with what hangs on it; a drag is one step of work. Where the mouse says nothing, as along an
/// arrow that points at the viewer, the thing stays where it is, and the reason is told.
///
/// Thread: the application's, which is the render thread.
class MoveTool : public QObject {
    Q_OBJECT

public:
    /// Both outlive this.
    MoveTool(ViewWidget& view, ViewState& state, QObject* parent = nullptr);

    bool isOn() const { return on; }
    void setOn(bool wanted);
    /// The thing that a drag would move; 0 while there is none.
    unsigned getThing() const { return thing; }
    bool isDragging() const { return drag.has_value(); }
    /// Whether arrows and rings lie along the axes of the world, or along those of the thing.
    vrk::visual::DragAxes getAxes() const { return axes; }
    void setAxes(vrk::visual::DragAxes wanted);
    /// Whether the event is for the handle, and for nothing else.
    bool take(const InputEvent& event);
    /// Takes a drag back. False where there was none.
    bool cancel();

signals:
    /// Switched on or off, or the axes changed.
    void changed();
    /// How far the drag has gone, or why that cannot be told; empty at its end.
    void textChanged(const QString& text);

private:
    using Handle = vrk::visual::DragHandle::HandleType;
    struct Drag {
        Handle handle;
        std::variant<vrk::visual::AxisDrag, vrk::visual::RingDrag> way;
        vrk::rob::Posed start;  // of the thing, in the world
        vrk::rob::Posed onBase; // the same, as the model has it
        int gesture = 0;
        bool hasMoved = false;
    };

    void follow();
    void showHandle();
    void place();
    Handle handleAt(const QPointF& place) const;
    void begin(Handle handle, const QPointF& place);
    void goOn(const InputEvent& event);
    void end();
    void moveTo(const vrk::rob::Posed& pose);
    void tell(const QString& text, const QPointF& place);

    ViewWidget& view;
    ViewState& state;
    QLabel* label; // beside the mouse, Qt's
    bool on = false;
    unsigned thing = 0;
    vrk::visual::DragAxes axes = vrk::visual::DragAxes::Local;
    std::optional<Drag> drag;
    int gestures = 0;
};

} // namespace vrkview
