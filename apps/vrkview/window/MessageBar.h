#pragma once

#include <QFrame>

class QLabel;

namespace vrkview {

/// A line above the view that tells what went wrong and what to do about it. It blocks nothing and stays until it is closed
/// or another message takes its place; without a message it takes no room.
class MessageBar : public QFrame {
    Q_OBJECT

public:
    explicit MessageBar(QWidget* parent = nullptr);

    /// @param text  plain text.
    void tell(const QString& text);
    QString getText() const;

private:
    QLabel* text;
};

} // namespace vrkview
