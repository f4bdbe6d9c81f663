#pragma once

#include <QDockWidget>
#include <QTimer>

class QDoubleSpinBox;
class QFormLayout;
class QLabel;
class QProgressBar;
class QToolButton;

namespace vrkview {

class BodyCoats;
class SprayRun;
class ThicknessLegend;

/// The dock of sprays: how the gun paints and is led, its run along the way, the legend of the thickness, and how much of the
/// paint is as thick as it should be.
class PaintDock : public QDockWidget {
    Q_OBJECT

public:
    /// @param coats  outlives this, as `run` does.
    PaintDock(BodyCoats& coats, SprayRun& run, QWidget* parent = nullptr);

    /// "start", "play", "step" or "end".
    QToolButton* button(const QString& name) const;

signals:
    void clearRequested();
    void openRequested();
    void saveRequested();

private:
    QWidget* makeGun();
    QWidget* makeRun();
    QWidget* makeTarget();
    QDoubleSpinBox* add(QFormLayout& form, const QString& text, const char* name, double least, double most,
                        double value, const QString& unit, const QString& tip);
    QToolButton* addButton(const char* name, const QString& text, const QIcon& icon);
    void takeSettings();
    void takeTarget();
    void followRun();
    void followCoats();

    BodyCoats& coats;
    SprayRun& run;
    QDoubleSpinBox* angle;
    QDoubleSpinBox* flow;
    QDoubleSpinBox* profile;
    QDoubleSpinBox* distance;
    QDoubleSpinBox* speed;
    QDoubleSpinBox* stroke;
    QDoubleSpinBox* target;
    QDoubleSpinBox* tolerance;
    QLabel* what;
    QLabel* place;
    QProgressBar* progress;
    QToolButton* start;
    QToolButton* play;
    QToolButton* step;
    QToolButton* end;
    ThicknessLegend* legend;
    QLabel* shares;
    QWidget* maps;
    QTimer counting; // the shares of many vertices are counted some times a second
};

} // namespace vrkview
