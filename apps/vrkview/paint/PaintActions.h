#pragma once

#include <QObject>

#include <functional>
#include <vector>

class QAction;
class QMenu;
class QWidget;

namespace vrkview {

class BodyCoats;
class SprayRun;
class ViewState;

/// The commands that paint bodies by a spray, and those for maps of the thickness.
class PaintActions : public QObject {
    Q_OBJECT

public:
    /// @param window  gets the actions, which are its children then; outlives this, as the others do.
    PaintActions(QWidget& window, ViewState& state, BodyCoats& coats, SprayRun& run);

    void fillMenu(QMenu& menu) const;
    void fillTreeMenu(QWidget& tree) const;

    /// Puts the gun at the beginning of the path or band that is selected, to paint what else is; of a band alone its body.
    void begin();
    /// Of all selected bodies that are painted; without any of these of all.
    void clearPaint();
    void askWhereToSave();
    /// Of the one painted body that is meant.
    /// @param path  becomes one with .ply at its end.
    void saveMapTo(QString path);
    void askForMap();
    /// Puts what the file says on the one body that is meant: selected, or the only one that is covered. A body that is not
    /// covered yet is.
    void openMap(const QString& path);

signals:
    /// @param text  says what is wrong. The station is as before.
    void failed(const QString& text);
    void saved(const QString& path);
    /// A gun stands ready, or a map is shown.
    void began();

private:
    std::vector<unsigned> paintedOnes() const;
    unsigned theOne(std::vector<unsigned> bodies);
    void attempt(const std::function<void()>& act);
    void followState();

    QWidget& window;
    ViewState& state;
    BodyCoats& coats;
    SprayRun& run;
    QAction* beginAction;
    QAction* clear;
    QAction* open;
    QAction* save;
};

} // namespace vrkview
