#pragma once

#include "canvas/InputEvent.h"
#include "canvas/MouseNote.h"
#include "canvas/RunPlaces.h"
#include "edit/EditBand.h"

#include "handles/RingDrag.h"

#include <QObject>
#include <QString>

#include <memory>
#include <optional>

namespace vrk::visual {
class HandleMeshVisual;
class Visual;
} // namespace vrk::visual

namespace vrkview {

class MoveTool;
class ViewState;
class ViewWidget;

/// Shapes the selected band by hand, while things are moved by hand: a knob at either end is drawn along the edges. A click on
/// one of the vectors puts two rings there, which tilt and twist the tool, until the mouse is pressed elsewhere.
///
/// A drag shows what would become of the band; its end is one step of work. A closed band has one knob, and is an open one
/// when that has been drawn.
///
/// Thread: the application's, which is the render thread.
class BandTool : public QObject {
    Q_OBJECT

public:
    using PathPoint = BandLook::PathPoint;
    enum class Piece { None, Start, End, Tilt, Twist, Vector };

    /// All outlive this.
    BandTool(ViewWidget& view, ViewState& state, const MoveTool& mover, QObject* parent = nullptr);

    /// The band that is shaped; 0 while there is none.
    unsigned getBand() const { return band; }
    /// Where the rings stand; empty while they stand nowhere.
    std::optional<PathPoint> getVector() const;
    bool isDragging() const { return drag.has_value(); }
    /// Whether `take` will ask what lies under the mouse: the scene must have worked off its posts then.
    bool asksFor(const InputEvent& event) const;
    /// Whether the event is for the band, and for nothing else.
    bool take(const InputEvent& event);
    /// Takes a drag back. False where there was none.
    bool cancel();

signals:
    /// What the drag has come to, or why that cannot be told; empty at its end.
    void textChanged(const QString& text);

private:
    struct Found {
        Piece piece = Piece::None;
        std::optional<PathPoint> vector;

        bool operator==(const Found&) const = default;
    };
    struct Drag {
        Piece piece;
        RunPlaces run;
        BandLook look;                             // what the band would be now
        std::optional<vrk::visual::RingDrag> ring; // of a tilt or a twist
    };
    struct Index {
        int edge = 0;
        std::size_t vector = 0; // of the edge
    };

    void follow();
    void showEnds();
    void showRings();
    void place();
    void putRings(std::optional<Index> vector);
    Found find(const QPointF& place) const;
    Piece knobAt(const QPointF& place) const;
    static std::optional<QPointF> imageOf(Piece piece);
    void hover(const Found& found);
    void begin(Piece piece, const QPointF& place);
    void goOn(const InputEvent& event);
    void drawEnd(const InputEvent& event);
    void turn(const InputEvent& event);
    void end(bool keeps);
    void tell(const QString& text, const QPointF& place, const std::optional<QPointF>& keepClear = {});
    std::shared_ptr<vrk::task::EdgeMfgShape> shape() const;
    vrk::rob::Posed carrierPose() const;
    std::optional<Index> indexOf(PathPoint point) const;

    ViewWidget& view;
    ViewState& state;
    const MoveTool& mover;
    MouseNote note;
    unsigned band = 0;
    std::optional<Index> at; // the vector with the rings
    vrk::rob::Posed onEdge;  // where they stand, in the coordinates of the edges
    Found hovered;
    std::optional<Drag> drag;
};

} // namespace vrkview
