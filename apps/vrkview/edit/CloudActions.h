#pragma once

#include "edit/CloudPoints.h"

#include <QObject>

#include <functional>

class QAction;
class QMenu;
class QWidget;

namespace vrkview {

class ViewState;

/// The commands on selected points of clouds. They know their keys, which hold in the whole window.
class CloudActions : public QObject {
    Q_OBJECT

public:
    /// @param window  gets the actions, which are its children then; outlives this, as `state` does.
    CloudActions(QWidget& window, ViewState& state);

    void fillMenu(QMenu& menu) const;
    void fillTreeMenu(QWidget& tree) const;

    void hidePoints();
    /// Hides all other points of clouds that are shown.
    void showOnlyPoints();
    void showAllPoints();
    /// The clouds that come of it are selected then.
    void cutPoints();
    /// Also those of whole clouds that are selected.
    void askWhereToSave();
    /// @param path  with .ply or .xyz at its end; without either it becomes a PLY file.
    void savePointsTo(QString path);

signals:
    /// @param text  says what is wrong. The station is as before.
    void failed(const QString& text);
    void saved(const QString& path);

private:
    QAction* add(const QString& text, const QKeySequence& key, void (CloudActions::*run)());
    PointsOfClouds pointsToSave() const;
    void attempt(const std::function<void()>& act);
    void followState();

    QWidget& window;
    ViewState& state;
    QAction* hide;
    QAction* showOnly;
    QAction* showAll;
    QAction* cut;
    QAction* save;
};

} // namespace vrkview
