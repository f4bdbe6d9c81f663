#pragma once

#include "canvas/Picked.h"

#include "visual/VisualWatch.h"

#include <QListWidget>
#include <QPointF>

#include <vector>

namespace vrkview {

/// What a place in the view could mean, listed beside the mouse: first what a click would take, behind it the others, each
/// with the reason that speaks against it. One of them is current. It takes no keys, and never the focus.
///
/// Thread: the application's, which is the render thread.
class CandidateList : public QListWidget {
    Q_OBJECT

public:
    explicit CandidateList(QWidget* parent);

    /// Lists these, the first of them current, and shows itself; nothing for none.
    /// @param place  on the screen; the list lies right and below, where there is room.
    void open(std::vector<Picked> found, const QPoint& place);
    bool isOpen() const { return !all.empty(); }
    /// Makes another one current, around the end.
    void step(int by);
    /// Null while nothing is listed.
    const Picked* current() const;
    const std::vector<Picked>& getAll() const { return all; }
    /// Whether the visual of one of them has left the scene, also where another one stands there for the same thing.
    bool isStale() const { return watch.hasAnyDied(); }
    void dismiss();

signals:
    void currentChanged();
    /// The user clicked a row; it is current.
    void rowClicked();

protected:
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    std::vector<Picked> all;
    vrk::visual::VisualWatch watch; // of their visuals
};

} // namespace vrkview
