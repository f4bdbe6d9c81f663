#pragma once

#include "canvas/MoveSteps.h"
#include "canvas/ProgramParts.h"

#include <QByteArray>
#include <QObject>
#include <QSettings>
#include <QStringList>

namespace vrkview {

/// What the viewer remembers from one run to the next. It lies where the platform keeps such things for the user, as an
/// INI file "vrkview/vrkview.ini"; `QSettings::setPath` puts it elsewhere.
class Settings : public QObject {
    Q_OBJECT

public:
    enum class MouseStyle { OrbitWithMiddle, OrbitWithLeft };
    static constexpr int mostRecentFiles = 10;

    explicit Settings(QObject* parent = nullptr);

    /// As `QMainWindow::saveGeometry` and `saveState` make them; empty before the first run.
    QByteArray windowGeometry() const;
    QByteArray windowState() const;
    void setWindow(const QByteArray& geometry, const QByteArray& state);

    /// The names of docks that the user closed although the station had something for them.
    QStringList closedDocks() const;
    void setClosedDocks(const QStringList& names);

    /// Absolute paths, the last one opened first.
    QStringList recentFiles() const;
    void addRecentFile(const QString& path);
    void forgetRecentFiles();

    /// The name of a `DrawMode`; empty before the first choice.
    QString drawMode() const;
    void setDrawMode(const QString& name);
    /// Before the first choice the size of the station says, and so `fallback`.
    bool isGridShown(bool fallback) const;
    void setGridShown(bool shown);
    bool isDrawn(ProgramPart part) const;
    void setDrawn(ProgramPart part, bool drawn);

    bool isDepthShaded() const;
    void setDepthShaded(bool shaded);
    bool isGroundShadowed() const;
    void setGroundShadowed(bool shadowed);
    bool isCoarserWhileMoving() const;
    void setCoarserWhileMoving(bool coarser);

    MouseStyle mouseStyle() const;
    void setMouseStyle(MouseStyle style);

    /// By which things go that are moved by hand with Ctrl.
    MoveSteps moveSteps() const;
    void setMoveSteps(const MoveSteps& steps);

signals:
    void recentFilesChanged();
    void mouseStyleChanged();

private:
    QSettings store;
};

} // namespace vrkview
