#pragma once

#include <QLineEdit>

namespace vrkview {

/// The line above a tree that leaves only what has its text. Esc empties it, and goes on to the window when it is empty.
class FilterLine : public QLineEdit {
    Q_OBJECT

public:
    explicit FilterLine(const QString& placeholder, QWidget* parent = nullptr);

protected:
    bool event(QEvent* event) override;
};

} // namespace vrkview
