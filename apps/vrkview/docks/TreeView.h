#pragma once

#include <QTreeView>

namespace vrkview {

/// The view of the station's tree: a click into the column of eyes is told and selects nothing.
class TreeView : public QTreeView {
    Q_OBJECT

public:
    explicit TreeView(QWidget* parent = nullptr);

signals:
    void eyeClicked(const QModelIndex& index);
    void focusRequested(const QModelIndex& index);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    /// Whether the event was for an eye.
    bool clickEye(const QMouseEvent& event);
};

} // namespace vrkview
