#pragma once

#include <QLabel>
#include <QPointF>
#include <QString>

namespace vrkview {

class ViewWidget;

/// A line beside the mouse while it drags something: how far, or why not.
///
/// Thread: the application's.
class MouseNote {
public:
    /// @param view  outlives this, and owns the label.
    explicit MouseNote(ViewWidget& view);

    /// @param place  of the mouse, in device pixels of the view.
    void tell(const QString& text, const QPointF& place);
    void hush();

private:
    ViewWidget& view;
    QLabel* label;
};

} // namespace vrkview
