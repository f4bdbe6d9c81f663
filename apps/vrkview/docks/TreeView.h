#pragma once

#include <QTreeView>

#include <optional>
#include <vector>

namespace vrkview {

/// A tree in a dock, with rows of one height. A click into its column of eyes, if it has one, is told and selects nothing.
class TreeView : public QTreeView {
    Q_OBJECT

public:
    explicit TreeView(std::optional<int> eyeColumn, QWidget* parent = nullptr);

    /// Marks these rows and no others, and scrolls to the last one, which opens what it lies in.
    /// @param rows  indexes of first columns.
    void markRows(const std::vector<QModelIndex>& rows);

    /// Whether the selection changes, right now, by a click or a key with Ctrl: what is selected elsewhere is to stay.
    bool isExtending() const { return extending; }

signals:
    void eyeClicked(const QModelIndex& index);
    void focusRequested(const QModelIndex& index);

protected:
    bool viewportEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    /// Whether the event was for an eye.
    bool clickEye(const QMouseEvent& event);

    std::optional<int> eyeColumn;
    bool extending = false;
};

} // namespace vrkview
