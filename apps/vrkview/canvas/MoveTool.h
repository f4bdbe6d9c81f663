#pragma once

#include "canvas/HandleDrag.h"
#include "canvas/InputEvent.h"
#include "canvas/MouseNote.h"
#include "canvas/MoveSteps.h"
#include "canvas/SnapSign.h"
#include "canvas/TypedNumber.h"
#include "edit/MoveThings.h"

#include <QObject>
#include <QString>

#include <optional>
#include <vector>

namespace vrkview {

class ViewState;
class ViewWidget;

/// Moves what is selected by hand: a handle stands on what was selected last, whose arrows move and whose rings turn all of
/// it.
///
/// The things follow the mouse, with what hangs on them; a drag is one step of work. Where the mouse says nothing, as along
/// an arrow that points at the viewer, they stay where they are, and the reason is told.
///
/// An arrow or a ring that was taken hold of stays the chosen one, until the mouse is pressed elsewhere: a number that is
/// typed then moves along it from where the things are, or in a drag from where that began.
///
/// Thread: the application's, which is the render thread.
class MoveTool : public QObject {
    Q_OBJECT

public:
    /// Both outlive this.
    MoveTool(ViewWidget& view, ViewState& state, QObject* parent = nullptr);

    bool isOn() const { return on; }
    void setOn(bool wanted);
    /// The thing that the handle stands on; 0 while there is none. Of a move it is the target.
    unsigned getThing() const { return thing; }
    /// What a drag would move, but for what hangs on it.
    const std::vector<unsigned>& getMoved() const { return moved; }
    bool isDragging() const { return drag.has_value(); }
    /// Whether arrows and rings lie along the axes of the world, or along those of the thing.
    vrk::visual::DragAxes getAxes() const { return axes; }
    /// A drag that is going on begins anew, along the new axis: the things go back, and on from there.
    void setAxes(vrk::visual::DragAxes wanted);
    /// With Ctrl.
    const MoveSteps& getSteps() const { return steps; }
    void setSteps(const MoveSteps& wanted);
    /// While `V` is held: what is dragged by an arrow goes to the geometry under the mouse, with its origin.
    bool isSnapping() const { return snaps; }
    void setSnapping(bool wanted);
    /// Whether `take` will ask what lies under the mouse: the scene must have worked off its posts then.
    bool asksFor(const InputEvent& event) const;
    /// Whether the event is for the handle, and for nothing else.
    bool take(const InputEvent& event);
    /// The arrow or ring that typed numbers are for; none of them at first.
    HandleDrag::Handle getChosen() const { return chosen; }
    /// A key of a number: a digit, "-", ".", ",", or "Backspace" or "Return" where something was typed. False for any other,
    /// and where no handle is chosen.
    bool type(const QString& key);
    /// Forgets the number that was typed, or else takes a drag back, or else chooses no handle. False where there was nothing
    /// of these.
    bool cancel();

signals:
    /// Switched on or off, or the axes or the steps changed.
    void changed();
    void stepsChanged();
    /// How far the drag has gone, or why that cannot be told; empty at its end.
    void textChanged(const QString& text);
    /// This key of a number is taken next.
    void typing(const QString& key);
    void snappingChanged(bool isSnapping);

protected:
    /// Of the view: digits are for the number, ahead of the commands that have them as keys.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    using Handle = HandleDrag::Handle;
    struct Start {
        unsigned thing;
        vrk::rob::Posed base; // of what it hangs on, in the world
        vrk::rob::Posed pose; // on that
    };
    struct Drag {
        HandleDrag way;
        std::vector<Start> starts;
        int gesture = 0;
    };

    bool takesKey(const QString& key) const;
    void finishNumber();
    void showNumber();
    void choose(Handle handle);
    void follow();
    void showHandle();
    void place();
    Handle handleAt(const QPointF& place) const;
    void hover(Handle handle);
    void showHovered();
    HandleDrag wayOf(Handle handle, const QPointF& place) const;
    Drag dragOf(Handle handle, const QPointF& place);
    void begin(Handle handle, const QPointF& place);
    void goOn(const InputEvent& event);
    void dragTo(const QPointF& place, Qt::KeyboardModifiers modifiers);
    bool snapTo(const QPointF& place);
    void end();
    bool takeBack();
    bool isAllThere() const;
    void moveBy(const Drag& by, double amount);
    void put(std::vector<MoveThings::Place> places, int gesture);
    void tell(const QString& text, const QPointF& place);
    void hush();

    ViewWidget& view;
    ViewState& state;
    MouseNote note;
    bool on = false;
    unsigned thing = 0;
    std::vector<unsigned> moved;
    vrk::visual::DragAxes axes = vrk::visual::DragAxes::Local;
    MoveSteps steps;
    Handle hovered = Handle::None; // under the mouse
    Handle chosen = Handle::None;
    Handle shown = Handle::None; // as the one of these
    TypedNumber number;
    bool snaps = false;
    SnapSign sign;
    std::optional<Drag> drag;
    QPointF last;           // where the mouse was
    int gestures = 0;       // so far
    bool isPutting = false; // a change that comes now is this one's own
};

} // namespace vrkview
