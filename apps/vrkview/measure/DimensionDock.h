#pragma once

#include "measure/StationDimensions.h"

#include "selection/geometry/Box.h"

#include <boost/signals2/connection.hpp>

#include <QDockWidget>

class QTreeWidget;
class QTreeWidgetItem;

namespace vrkview {

class ViewState;

/// The dock with the dimensions of the station, what each of them measures and its value: what is selected in it is selected
/// in the view, and the other way round.
class DimensionDock : public QDockWidget {
    Q_OBJECT

public:
    /// @param state  outlives this.
    explicit DimensionDock(ViewState& state, QWidget* parent = nullptr);

    QTreeWidget& getList() const { return *list; }

signals:
    /// The user wants to look at what lies in this box of the world.
    void focusRequested(const vrk::visual::Box& box);

private:
    void showEntries();
    void takeSelection();
    void focusOn(int row);
    void rename(QTreeWidgetItem* item);

    ViewState& state;
    QTreeWidget* list;
    bool isShowing = false; // what changes in the list is not the user's doing
    boost::signals2::scoped_connection following;
};

} // namespace vrkview
