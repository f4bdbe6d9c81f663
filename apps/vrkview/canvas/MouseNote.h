#pragma once

#include <QLabel>
#include <QPointF>
#include <QString>

#include <optional>

namespace vrkview {

class ViewWidget;

/// A line beside the mouse while it drags something: how far, or why not.
///
/// Thread: the application's.
class MouseNote {
public:
    /// @param view  outlives this, and owns the label.
    explicit MouseNote(ViewWidget& view);

    /// Beside the mouse, to the right of it and below where that covers nothing that is to be seen.
    /// @param place      of the mouse, in device pixels of the view.
    /// @param keepClear  a place that it must not cover, likewise.
    void tell(const QString& text, const QPointF& place, const std::optional<QPointF>& keepClear = {});
    void hush();

private:
    ViewWidget& view;
    QLabel* label;
};

} // namespace vrkview
