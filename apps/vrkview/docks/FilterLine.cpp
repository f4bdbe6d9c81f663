#include "docks/FilterLine.h"

#include <QKeyEvent>

namespace vrkview {

FilterLine::FilterLine(const QString& placeholder, QWidget* parent) : QLineEdit(parent)
{
    setPlaceholderText(placeholder);
    setClearButtonEnabled(true);
}

bool FilterLine::event(QEvent* event)
{
    const bool isKey = event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress;
    if (!isKey || text().isEmpty() || static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape)
        return QLineEdit::event(event);
    if (event->type() == QEvent::KeyPress)
        clear();
    event->accept();
    return true;
}

} // namespace vrkview
