#pragma once

#include "canvas/CandidateList.h"
#include "canvas/Hover.h"
#include "canvas/InputEvent.h"
#include "canvas/Navigation.h"
#include "canvas/ViewPick.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <optional>

namespace vrkview {

class BandTool;
class CameraFlight;
class FrameTool;
class MeasureTool;
class MoveTool;
class RegionTool;
class Settings;
class ViewState;
class ViewWidget;

/// What the mouse does in the view: navigates, selects, and shows what is under it.
///
/// A move of the mouse is not handled at once: it waits for the end of the present turn of the event loop, and until a few
/// milliseconds have passed since the last one that was handled. Later moves replace the waiting one, so that a fast mouse
/// costs one pick or one camera move a frame. Any other event has the waiting move handled first.
///
/// Where a place could mean several things, they can be listed: a click then takes the current one of the list, and a move
/// away from the place closes it.
///
/// Thread: the application's, which is the render thread. Places are device pixels of the view.
class Mouse : public QObject {
    Q_OBJECT

public:
    /// All outlive this.
    Mouse(ViewWidget& view, ViewState& state, const Settings& settings, CameraFlight& flight, RegionTool& region,
          MoveTool& mover, BandTool& bandTool, MeasureTool& measurer, FrameTool& framer, QObject* parent = nullptr);

    Hover& getHover() { return hover; }
    ViewPick& getPick() { return finder; }
    const CandidateList& getCandidates() const { return *candidates; }
    /// Lists what lies under the mouse or, where that is listed, goes on in the list. Nothing while the mouse is elsewhere or
    /// drags.
    void listCandidates(int step = 1);
    /// As a click on the row of the list does, from 0; nothing where there is no such row.
    void takeCandidate(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    /// False where nothing was listed.
    bool closeCandidates();
    bool isDragging() const { return drag != Drag::None; }
    bool isMoveWaiting() const { return waiting.has_value(); }
    /// How far the mouse may move between press and release of what is still a click; at first some logical pixels.
    double getClickRadius() const;
    void setClickRadius(double pixels) { clickRadius = pixels; }
    /// How long a press without a move is still a click; 0 for however long. Milliseconds.
    void setLongPress(int time) { longPress.setInterval(time); }

    /// What a pick was made for.
    enum class Purpose { Hover, Click, Orbit, Focus };

signals:
    /// This event is dealt with next.
    void handling(const vrkview::InputEvent& event);
    void handled();
    /// @param found  null for nothing.
    void picked(vrkview::Mouse::Purpose purpose, const vrkview::Picked* found);
    /// The button was held down over one place.
    void pressedLong();
    /// The list was opened or closed.
    void candidatesChanged();
    /// A row of the list was clicked, and is taken next.
    void candidateClicked(int row, Qt::KeyboardModifiers modifiers);
    /// The user wants to look at this visual.
    void focusRequested(unsigned id);

private:
    enum class Drag { None, Orbit, Pan, Region, Nothing };

    void take(const InputEvent& event);
    void handleWaiting();
    void handle(const InputEvent& event);
    void act(const InputEvent& event);
    void press(const InputEvent& event);
    void release(const InputEvent& event);
    void move(const InputEvent& event);
    void turnWheel(const InputEvent& event);

    void startDrag();
    void beginRegion();
    Drag dragOfPress();
    void dragOn(const QPointF& place);
    void endDrag();
    void giveUpDrag();
    void endRegion();
    void hoverAt(const InputEvent& event);
    void click();
    bool isPicking() const;
    bool clickFrame();
    bool clickLasso(const InputEvent& event);
    bool clickDimension(const InputEvent& event);
    void apply(const Picked* found, Qt::KeyboardModifiers modifiers);
    void applyToThing(unsigned thing, bool adds);
    void applyToPiece(const Picked& found, Qt::KeyboardModifiers modifiers);
    void toggleFace(const Picked& found, Qt::KeyboardModifiers modifiers);
    void togglePoint(const Picked& found, bool adds);
    void bringUpToDate();
    std::optional<Picked> pick(const QPointF& place, Purpose purpose, PickAim aim);
    bool isForCandidates(const InputEvent& event);
    bool isForHandle(const InputEvent& event);
    void showCandidate();

    ViewWidget& view;
    ViewState& state;
    const Settings& settings;
    CameraFlight& flight;
    RegionTool& region;
    MoveTool& mover;
    BandTool& bandTool;
    MeasureTool& measurer;
    FrameTool& framer;
    Navigation navigation;
    ViewPick finder;
    Hover hover;
    CandidateList* candidates;         // Qt's, a child of the view
    QPointF listedAt;                  // where they lie
    std::optional<QPointF> lastPlace;  // of the mouse, while it is over the view
    QTimer longPress;                  // since a press that may become a long one
    std::optional<InputEvent> waiting; // the last move
    QTimer timer;                      // for its turn
    QElapsedTimer sinceMove;
    bool isUpToDate = false;           // the scene, for the event that is dealt with
    std::optional<InputEvent> pressed; // which began what is going on
    bool isSecondClick = false;        // what is pressed ends a double click, and is no click by itself
    bool isSpent = false;              // what is pressed has had its effect, and is neither click nor drag
    Drag drag = Drag::None;
    QPointF last; // in a drag
    double wheelRest = 0;
    std::optional<double> clickRadius;
};

} // namespace vrkview
