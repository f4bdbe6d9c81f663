#include "window/UnitMenu.h"

#include "files/FileOpening.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>

namespace vrkview {

void fillUnitMenu(QMenu& menu, FileOpening& opening)
{
    using vrk::LengthUnit;
    auto* units = new QActionGroup(&menu);
    const auto add = [&](const QString& text, LengthUnit unit) {
        QAction* action = menu.addAction(text);
        action->setCheckable(true);
        action->setChecked(opening.getReading().unit.value_or(LengthUnit::Millimetre) == unit);
        units->addAction(action);
        QObject::connect(action, &QAction::triggered, &opening, [&opening, unit] {
            ReadingOptions reading = opening.getReading();
            reading.unit = unit;
            opening.setReading(reading);
        });
    };
    add(QMenu::tr("&Millimetres"), LengthUnit::Millimetre);
    add(QMenu::tr("&Centimetres"), LengthUnit::Centimetre);
    add(QMenu::tr("M&etres"), LengthUnit::Metre);
    add(QMenu::tr("&Inches"), LengthUnit::Inch);
}

} // namespace vrkview
