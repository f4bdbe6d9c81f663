#pragma once

#include "edit/MeshSimplifying.h"

#include <QObject>

#include <optional>

class QAction;
class QMenu;
class QWidget;

namespace vrkview {

class ViewState;

/// The commands that make the meshes of the selected things coarser, and shade them smoothly or by their facets.
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
    void askForAngle();
    /// @param degrees  0 to 180: across edges that are bent by at most this; 0 shows each facet.
    void smoothSelected(double degrees);

signals:
    /// @param text  says what is wrong. The station is as before.
    void failed(const QString& text);
    /// @param text  what became of the meshes.
    void told(const QString& text);

private:
    enum class Kind { Coarser, Smooth };

    void take(const MeshSimplifying::Result& result);
    QString tellOfCoarser(const MeshSimplifying::Result& result) const;
    void followState();

    QWidget& window;
    ViewState& state;
    MeshSimplifying work;
    Kind kind = Kind::Coarser; // of the work that was begun last
    QAction* simplify;
    QAction* smooth;
};

} // namespace vrkview
