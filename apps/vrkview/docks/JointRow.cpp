#include "docks/JointRow.h"

#include "docks/LimitBox.h"

#include <QGridLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>

#include <cmath>

namespace vrkview {
namespace {

constexpr int sliderSteps = 3600;
constexpr int decimals = 2;

} // namespace

JointRow::JointRow(const QString& name, const JointRange& range, QGridLayout& grid, QObject* parent)
    : QObject(parent), range(range), slider(new QSlider(Qt::Horizontal)), box(new LimitBox)
{
    const QString limits =
        tr("%1 from %2 to %3%4").arg(name).arg(range.lower, 0, 'f', 1).arg(range.upper, 0, 'f', 1).arg(range.unit);
    auto* label = new QLabel(name);
    label->setToolTip(limits);
    label->setMaximumWidth(96);
    slider->setRange(0, sliderSteps);
    slider->setPageStep(sliderSteps / 20);
    slider->setMinimumWidth(70);
    slider->setToolTip(limits);
    box->setRange(range.lower, range.upper);
    box->setDecimals(decimals);
    box->setSuffix(range.unit);
    box->setAlignment(Qt::AlignRight);
    box->setToolTip(limits);
    box->setAccelerated(true);
    box->setLocale(QLocale::c());
    const int line = grid.rowCount();
    grid.addWidget(label, line, 0);
    grid.addWidget(slider, line, 1);
    grid.addWidget(box, line, 2);

    connect(box, &LimitBox::limited, this, [this, name](double typed) {
        emit limited(tr("%1: %2%5 is beyond its limits, %3 to %4%5; it stands at %6%5")
                         .arg(name)
                         .arg(typed, 0, 'g', 6)
                         .arg(this->range.lower, 0, 'f', 1)
                         .arg(this->range.upper, 0, 'f', 1)
                         .arg(this->range.unit)
                         .arg(box->value(), 0, 'f', 1));
    });
    connect(slider, &QSlider::valueChanged, this, [this](int step) {
        const double value = this->range.lower + (this->range.upper - this->range.lower) * step / sliderSteps;
        const QSignalBlocker quiet(box);
        box->setValue(value);
        emit valueChanged(box->value());
    });
    connect(box, &QDoubleSpinBox::valueChanged, this, [this](double value) {
        const QSignalBlocker quiet(slider);
        slider->setValue(stepOf(value));
        emit valueChanged(value);
    });
}

double JointRow::getValue() const
{
    return box->value();
}

void JointRow::setValue(double value)
{
    if (box->hasFocus() && std::abs(box->value() - value) < 0.5 * std::pow(10.0, -decimals))
        return; // the text is just being typed
    const QSignalBlocker quietBox(box);
    const QSignalBlocker quietSlider(slider);
    box->setValue(value);
    slider->setValue(stepOf(value));
}

int JointRow::stepOf(double value) const
{
    const double extent = range.upper - range.lower;
    return extent > 0 ? static_cast<int>(std::lround((value - range.lower) / extent * sliderSteps)) : 0;
}

} // namespace vrkview
