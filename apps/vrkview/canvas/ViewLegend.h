#pragma once

#include <QImage>
#include <QObject>
#include <QRect>
#include <QTimer>

namespace vrkview {

class ViewState;
class ViewWidget;

/// The legend of heights over the lower right corner of the view, as pictures have it. The library draws it with the scene, so
/// the mouse goes through it; pictures that are taken of the view are without it.
///
/// Thread: the application's, which is the render thread.
class ViewLegend : public QObject {
    Q_OBJECT

public:
    /// @param view   which owns it.
    /// @param state  outlives it.
    ViewLegend(ViewWidget& view, const ViewState& state);

    /// What lies over the view now, device pixels; null while nothing does.
    const QImage& getPicture() const { return picture; }
    /// Where it lies in the view, device pixels; empty while nothing does.
    QRect getArea() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void refresh();

    ViewWidget& view;
    QTimer later; // when what was posted is done; many reasons at once make one legend
    QImage picture;
    int margin = 0; // to the edges of the view, device pixels
};

} // namespace vrkview
