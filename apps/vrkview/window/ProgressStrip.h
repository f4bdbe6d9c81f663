#pragma once

#include <QWidget>

class QLabel;
class QProgressBar;

namespace vrkview {

class LongWork;

/// In the status line: how far a piece of work is, and a button that gives it up. Hidden while there is none.
class ProgressStrip : public QWidget {
    Q_OBJECT

public:
    /// @param work  outlives this.
    explicit ProgressStrip(LongWork& work, QWidget* parent = nullptr);

private:
    QLabel* text;
    QProgressBar* bar;
};

} // namespace vrkview
