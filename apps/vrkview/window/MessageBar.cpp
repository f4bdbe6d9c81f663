#include "window/MessageBar.h"

#include "window/Glyphs.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QToolButton>

namespace vrkview {

MessageBar::MessageBar(QWidget* parent) : QFrame(parent), text(new QLabel)
{
    const int iconSide = style()->pixelMetric(QStyle::PM_SmallIconSize);
    setAutoFillBackground(true);
    QPalette colors = palette();
    colors.setColor(QPalette::Window, QColor(255, 243, 214));
    colors.setColor(QPalette::WindowText, QColor(60, 42, 0));
    setPalette(colors);

    auto* icon = new QLabel;
    icon->setPixmap(glyph(Glyph::Warning).pixmap(QSize(iconSide, iconSide), devicePixelRatioF()));
    text->setWordWrap(true);
    text->setTextFormat(Qt::PlainText); // names of files come as they are
    text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* close = new QToolButton;
    close->setAutoRaise(true);
    close->setText(tr("Dismiss"));
    connect(close, &QToolButton::clicked, this, &QWidget::hide);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(10, 6, 6, 6);
    row->setSpacing(8);
    row->addWidget(icon, 0, Qt::AlignTop);
    row->addWidget(text, 1);
    row->addWidget(close, 0, Qt::AlignTop);
    hide();
}

void MessageBar::tell(const QString& message)
{
    text->setText(message);
    show();
}

QString MessageBar::getText() const
{
    return text->text();
}

} // namespace vrkview
