#pragma once

#include "canvas/MouseNote.h"
#include "canvas/PlaceMark.h"
#include "edit/DefineFrame.h"

#include <QObject>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace sdf {
class SdfObject;
}

namespace vrkview {

class ViewState;
class ViewWidget;

/// Defines a frame by clicks on the station: points, a face or a circle. What is picked is shown with the lines between, and
/// with the last pick the frame that would come of it; a note beside the mouse says what is asked for. The last pick makes the
/// frame, as one step of work, selects it and ends the definition.
///
/// A pick stays on the body that it was made on, and so moves with it. Where one of these bodies goes, the definition ends.
///
/// Thread: the application's, which is the render thread. Places are device pixels of the view.
class FrameTool : public QObject {
    Q_OBJECT

public:
    enum class Way {
        Axes,        ///< the origin, a point on x, and one on the side of y
        ThreePoints, ///< two points on x and one on y
        Face,        ///< in its middle, z along its normal
        Circle,      ///< in its centre, z along its axis
    };

    /// Both outlive this.
    FrameTool(ViewWidget& view, ViewState& state, QObject* parent = nullptr);

    bool isOn() const { return way.has_value(); }
    std::optional<Way> getWay() const { return way; }
    std::size_t pickCount() const { return picks.size(); }
    /// Begins a definition, in place of one that goes on.
    void start(Way wanted);
    void end();
    FrameUse getUse() const { return use; }
    void setUse(FrameUse wanted);
    /// False where there is none.
    bool takeLastBack();
    /// Takes the last pick back; right after that, or where there is none, ends the definition. False where there was none.
    bool cancel();

    // The mouse. The scene must have worked off its posts.
    void hoverAt(const QPointF& place);
    void leave();
    void pickAt(const QPointF& place);

signals:
    /// It was begun or ended, a pick was made or taken back, or the frame is to become something else.
    void changed();
    /// What is asked for; empty at the end.
    void textChanged(const QString& text);
    /// @param text  says why that is no frame. The picks before it stay.
    void failed(const QString& text);

private:
    struct Pick {
        std::weak_ptr<sdf::SdfObject> on; // a body; another one may have its id later
        unsigned body = 0;
        vrk::rob::Posd inBody;
    };
    /// What is previewed, in the world.
    struct Shown {
        std::vector<vrk::rob::Posd> points;
        std::optional<vrk::rob::Posed> frame;

        bool operator==(const Shown&) const = default;
    };

    std::size_t picksNeeded() const;
    QString question() const;
    std::optional<SnapPlace> placeAt(const QPointF& place) const;
    std::vector<vrk::rob::Posd> pickedPlaces() const;
    unsigned selectedOne() const;
    vrk::rob::Posed frameWith(const SnapPlace& last) const;
    void make(const SnapPlace& last);
    void follow();
    void followStation();
    void show(Shown now);
    void tell(const QString& text, const QPointF& place);

    ViewWidget& view;
    ViewState& state;
    MouseNote note;
    PlaceMark mark;
    std::optional<Way> way;
    FrameUse use = FrameUse::Frame;
    std::vector<Pick> picks;
    std::optional<SnapPlace> hovered; // what the next pick would be
    Shown shown;
    bool wasTakenBack = false; // last
};

} // namespace vrkview
