#include "window/ProgressStrip.h"

#include "files/LongWork.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include <cmath>

namespace vrkview {
namespace {

constexpr int barWidth = 160;
constexpr int textWidth = 240;
constexpr int whole = 1000;

} // namespace

ProgressStrip::ProgressStrip(LongWork& work, QWidget* parent) : QWidget(parent), text(new QLabel), bar(new QProgressBar)
{
    auto* cancel = new QPushButton(tr("Cancel"));
    cancel->setObjectName("cancel");
    text->setTextFormat(Qt::PlainText);
    text->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    text->setFixedWidth(textWidth);
    bar->setFixedWidth(barWidth);
    bar->setTextVisible(false);
    bar->setRange(0, whole);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(text);
    row->addWidget(bar);
    row->addWidget(cancel);
    hide();

    connect(&work, &LongWork::started, this, [this, cancel](const QString& what) {
        text->setText(fontMetrics().elidedText(what, Qt::ElideMiddle, textWidth));
        bar->setValue(0);
        cancel->setEnabled(true);
        show();
    });
    connect(&work, &LongWork::progressed, this, [this, cancel](const QString& step, double fraction) {
        if (cancel->isEnabled())
            text->setText(fontMetrics().elidedText(step, Qt::ElideMiddle, textWidth));
        bar->setValue(static_cast<int>(std::lround(fraction * whole)));
    });
    connect(&work, &LongWork::finished, this, &QWidget::hide);
    connect(cancel, &QPushButton::clicked, this, [this, cancel, &work] {
        work.cancel();
        cancel->setEnabled(false);
        text->setText(tr("Ending the present step"));
    });
}

} // namespace vrkview
