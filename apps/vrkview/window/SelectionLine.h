#pragma once

#include <QLabel>

namespace vrkview {

class ViewState;

/// Says in the status line how much is selected, and how many points are hidden: "3 things selected", "12,345 points of 2
/// clouds selected, 200 points hidden". Empty where neither is the case.
class SelectionLine : public QLabel {
    Q_OBJECT

public:
    /// @param state  outlives this.
    explicit SelectionLine(const ViewState& state, QWidget* parent = nullptr);

private:
    void follow();

    const ViewState& state;
};

} // namespace vrkview
