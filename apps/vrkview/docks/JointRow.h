#pragma once

#include <QObject>
#include <QString>

class QGridLayout;
class QSlider;

namespace vrkview {

class LimitBox;

/// What a joint may be set to, in the unit that the user reads: degrees or millimetres.
struct JointRange {
    double lower = 0;
    double upper = 0;
    QString unit;
};

/// A joint's line in a grid: its name, a slider and a box with the number, which always agree.
class JointRow : public QObject {
    Q_OBJECT

public:
    /// Appends the line to `grid`, whose widget owns what is in it.
    JointRow(const QString& name, const JointRange& range, QGridLayout& grid, QObject* parent);

    double getValue() const;
    /// Shows the value and tells nobody.
    void setValue(double value);
    QSlider& getSlider() const { return *slider; }
    LimitBox& getBox() const { return *box; }

signals:
    /// The user has set another one.
    void valueChanged(double value);
    /// The user typed one beyond the limits. @param text  a line that says so, and where the joint stands.
    void limited(const QString& text);

private:
    int stepOf(double value) const;

    JointRange range;
    QSlider* slider;
    LimitBox* box;
};

} // namespace vrkview
