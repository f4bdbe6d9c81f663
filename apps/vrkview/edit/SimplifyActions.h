#pragma once

#include "edit/MeshSimplifying.h"

#include <QObject>

class QAction;
class QMenu;
class QWidget;

namespace vrkview {

class ViewState;

/// The command that makes the meshes of the selected things coarser.
class SimplifyActions : public QObject {
    Q_OBJECT

public:
    /// @param window  gets the action, which is its child then; outlives this, as `state` does.
    SimplifyActions(QWidget& window, ViewState& state);

    void fillMenu(QMenu& menu) const;
    void fillTreeMenu(QWidget& tree) const;
    MeshSimplifying& getWork() { return work; }

    void askForTolerance();
    /// @param tolerance  model units; empty for one that suits the size of each mesh.
    void simplifySelected(std::optional<double> tolerance);

signals:
    /// @param text  says what is wrong. The station is as before.
    void failed(const QString& text);
    /// @param text  what became of the meshes.
    void told(const QString& text);

private:
    void take(const MeshSimplifying::Result& result);
    void followState();

    QWidget& window;
    ViewState& state;
    MeshSimplifying work;
    QAction* simplify;
};

} // namespace vrkview
