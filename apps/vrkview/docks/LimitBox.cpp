#include "docks/LimitBox.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrkview {

LimitBox::LimitBox(QWidget* parent) : QDoubleSpinBox(parent)
{
    connect(this, &QDoubleSpinBox::editingFinished, this, [this] {
        if (const std::optional<double> typed = std::exchange(beyond, std::nullopt))
            emit limited(*typed);
    });
}

std::optional<double> LimitBox::numberOf(QString text) const
{
    text = text.trimmed();
    if (const QString unit = suffix().trimmed(); !unit.isEmpty() && text.endsWith(unit))
        text.chop(unit.size());
    bool isNumber = false;
    const double number = locale().toDouble(text.trimmed(), &isNumber);
    return isNumber && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

QValidator::State LimitBox::validate(QString& text, int& place) const
{
    const QValidator::State usual = QDoubleSpinBox::validate(text, place);
    if (usual != QValidator::Invalid)
        return usual;
    const std::optional<double> number = numberOf(text); // Qt lets none be typed that is beyond
    const bool isBeyond = number && (*number < minimum() || *number > maximum());
    return isBeyond ? QValidator::Intermediate : QValidator::Invalid;
}

void LimitBox::fixup(QString& text) const
{
    const std::optional<double> number = numberOf(text);
    if (!number)
        return QDoubleSpinBox::fixup(text);
    if (*number < minimum() || *number > maximum())
        beyond = number;
    text = textFromValue(std::clamp(*number, minimum(), maximum())) + suffix();
}

} // namespace vrkview
