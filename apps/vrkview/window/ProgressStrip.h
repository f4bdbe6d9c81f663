#pragma once

#include <QWidget>

class QLabel;
class QProgressBar;

namespace vrkview {

class FileOpening;

/// In the status line: how far an opening is, and a button that gives it up. Hidden while nothing is opened.
class ProgressStrip : public QWidget {
    Q_OBJECT

public:
    /// @param opening  outlives this.
    explicit ProgressStrip(FileOpening& opening, QWidget* parent = nullptr);

private:
    QLabel* text;
    QProgressBar* bar;
};

} // namespace vrkview
