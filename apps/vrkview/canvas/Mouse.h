#pragma once

#include "canvas/Hover.h"
#include "canvas/InputEvent.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <optional>

namespace vrk::selection {
struct Result;
}

namespace vrkview {

class CameraFlight;
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
/// Thread: the application's, which is the render thread. Places are device pixels of the view.
class Mouse : public QObject {
    Q_OBJECT

public:
    /// All outlive this.
    Mouse(ViewWidget& view, ViewState& state, const Settings& settings, CameraFlight& flight, RegionTool& region,
          QObject* parent = nullptr);

    Hover& getHover() { return hover; }
    bool isDragging() const { return drag != Drag::None; }
    bool isMoveWaiting() const { return waiting.has_value(); }
    /// How far the mouse may move between press and release of what is still a click; at first some logical pixels.
    double getClickRadius() const;
    void setClickRadius(double pixels) { clickRadius = pixels; }

    /// What a pick was made for.
    enum class Purpose { Hover, Click, Orbit, Focus };

signals:
    /// This event is dealt with next.
    void handling(const vrkview::InputEvent& event);
    void handled();
    void picked(vrkview::Mouse::Purpose purpose, const vrk::selection::Result& result);
    /// The user wants to look at this visual.
    void focusRequested(unsigned id);

private:
    enum class Drag { None, Orbit, Pan, Region, Nothing };

    void take(const InputEvent& event);
    void handleWaiting();
    void handle(const InputEvent& event);
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
    void click();
    bool clickLasso(const InputEvent& event);
    void clickFace(const vrk::selection::Result& result);
    void clickEdge(const vrk::selection::Result& result);
    vrk::selection::Result pick(const QPointF& place, Purpose purpose);
    void prepareNavigation();

    ViewWidget& view;
    ViewState& state;
    const Settings& settings;
    CameraFlight& flight;
    RegionTool& region;
    Hover hover;
    std::optional<InputEvent> waiting; // the last move
    QTimer timer;                      // for its turn
    QElapsedTimer sinceMove;
    std::optional<InputEvent> pressed; // which began what is going on
    bool isSecondClick = false;        // what is pressed ends a double click, and is no click by itself
    Drag drag = Drag::None;
    QPointF last; // in a drag
    double wheelRest = 0;
    std::optional<double> clickRadius;
};

} // namespace vrkview
