#pragma once

#include "docks/Properties.h"

#include <QColor>
#include <QDockWidget>

#include <vector>

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace vrkview {

class ViewState;

/// The dock that tells of what is selected, and paints it. Of several things it tells how many and what they hold together,
/// and of nothing selected the same of the station.
class PropertyDock : public QDockWidget {
    Q_OBJECT

public:
    /// @param state  outlives this.
    explicit PropertyDock(ViewState& state, QWidget* parent = nullptr);

    /// Reads everything anew. Call it after the scene has moved things.
    void refresh();
    const Properties& getShown() const { return shown; }
    /// Paints what is selected, an assembly down to the bodies of its members, as the user does through the button.
    void paintSelected(const QColor& color);

private:
    void buildLines();
    void fillLines();
    void showColor();
    void chooseColor();
    /// Of the first body in what is selected, as the model says; invalid where it says nothing.
    QColor presentColor() const;

    ViewState& state;
    Properties shown;
    QVBoxLayout* column;
    QLabel* icon;
    QLabel* title;
    QLabel* subtitle;
    QWidget* lines = nullptr;
    struct Values {
        QLabel* first = nullptr;  // null for a heading
        QLabel* second = nullptr; // null where there is none
    };
    std::vector<Values> values; // in the order of `shown.lines`
    QWidget* colorLine;
    QPushButton* colorButton;
};

} // namespace vrkview
