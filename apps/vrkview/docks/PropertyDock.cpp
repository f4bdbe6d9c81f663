#include "docks/PropertyDock.h"

#include "canvas/ViewState.h"
#include "edit/History.h"
#include "edit/PaintBodies.h"
#include "window/Glyphs.h"

#include <QColorDialog>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace vrkview {
namespace {

constexpr int iconSide = 24;

QLabel* plainLabel()
{
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText); // names come from files
    return label;
}

void setBold(QLabel& label)
{
    QFont font = label.font();
    font.setBold(true);
    label.setFont(font);
}

/// A name in that column and its value in those next to it.
QLabel* addValue(QGridLayout& grid, int row, int column, const QString& name, int columns)
{
    QLabel* label = plainLabel();
    label->setText(name);
    label->setForegroundRole(QPalette::PlaceholderText);
    QLabel* value = plainLabel();
    value->setAlignment(Qt::AlignRight);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    value->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    grid.addWidget(label, row, column);
    grid.addWidget(value, row, column + 1, 1, columns);
    return value;
}

QFrame* rule()
{
    auto* line = new QFrame;
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

} // namespace

PropertyDock::PropertyDock(ViewState& state, QWidget* parent)
    : QDockWidget(tr("Properties"), parent), state(state), column(nullptr), icon(new QLabel), title(plainLabel()),
      subtitle(plainLabel()), colorLine(new QWidget), colorButton(new QPushButton)
{
    setObjectName("properties");
    icon->setFixedSize(iconSide, iconSide);
    setBold(*title);
    title->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    subtitle->setForegroundRole(QPalette::PlaceholderText);
    auto* head = new QGridLayout;
    head->setHorizontalSpacing(8);
    head->setVerticalSpacing(0);
    head->setColumnStretch(1, 1);
    head->addWidget(icon, 0, 0, 2, 1);
    head->addWidget(title, 0, 1);
    head->addWidget(subtitle, 1, 1);

    auto* colorRow = new QHBoxLayout(colorLine);
    colorRow->setContentsMargins(0, 0, 0, 0);
    colorButton->setToolTip(tr("Another colour for all bodies in what is selected"));
    colorRow->addWidget(new QLabel(tr("Colour")));
    colorRow->addWidget(colorButton, 1);
    connect(colorButton, &QPushButton::clicked, this, &PropertyDock::chooseColor);

    auto* content = new QWidget;
    column = new QVBoxLayout(content);
    column->setContentsMargins(10, 8, 10, 8);
    column->setSpacing(8);
    column->addLayout(head);
    column->addWidget(colorLine);
    column->addStretch();
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(content);
    setWidget(area);

    connect(&state, &ViewState::selectionChanged, this, &PropertyDock::refresh);
    connect(&state, &ViewState::stationChanged, this, &PropertyDock::refresh);
    connect(&state.getHistory(), &History::changed, this, &PropertyDock::refresh);
    buildLines();
    refresh();
}

void PropertyDock::refresh()
{
    Properties now = propertiesOf(state.getSelected(), state.getTree());
    if (now == shown)
        return showColor();
    const bool sameLines = std::ranges::equal(now.lines, shown.lines, [](const auto& a, const auto& b) {
        return a.name == b.name && a.secondName == b.secondName && a.value.isEmpty() == b.value.isEmpty();
    });
    shown = std::move(now);
    title->setText(shown.title);
    title->setToolTip(shown.title.toHtmlEscaped());
    subtitle->setText(shown.subtitle);
    const bool hasIcon = shown.kind != vrk::VisualType::None;
    icon->setVisible(hasIcon);
    if (hasIcon)
        icon->setPixmap(kindIcon(shown.kind).pixmap(QSize(iconSide, iconSide), devicePixelRatioF()));
    if (!sameLines)
        buildLines();
    fillLines();
    showColor();
}

void PropertyDock::buildLines()
{
    delete lines;
    values.clear();
    lines = new QWidget;
    auto* grid = new QGridLayout(lines);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(4);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    constexpr int columns = 4;
    for (const Properties::Line& line : shown.lines) {
        const int row = grid->rowCount();
        if (line.value.isEmpty()) {
            QLabel* heading = plainLabel();
            heading->setText(line.name);
            setBold(*heading);
            heading->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
            grid->addWidget(rule(), row, 0, 1, columns);
            grid->addWidget(heading, row + 1, 0, 1, columns);
            values.push_back({});
            continue;
        }
        const bool isPair = !line.secondName.isEmpty();
        values.push_back({addValue(*grid, row, 0, line.name, isPair ? 1 : columns - 1),
                          isPair ? addValue(*grid, row, 2, line.secondName, 1) : nullptr});
    }
    column->insertWidget(column->count() - 1, lines); // ahead of the free room
}

void PropertyDock::fillLines()
{
    for (std::size_t i = 0; i < values.size(); ++i) {
        const QString& value = shown.lines[i].value;
        const bool isPath = value.contains('/');
        if (values[i].first) {
            values[i].first->setToolTip(isPath ? value : QString());
            values[i].first->setText(isPath ? value.section('/', -1) : value);
        }
        if (values[i].second)
            values[i].second->setText(shown.lines[i].secondValue);
    }
}

void PropertyDock::showColor()
{
    colorLine->setVisible(shown.canBePainted);
    const QColor color = presentColor();
    colorButton->setText(color.isValid() ? color.name().toUpper() : tr("The usual one"));
    QPixmap swatch(14, 14);
    swatch.fill(color.isValid() ? color : QColor(Qt::transparent));
    colorButton->setIcon(color.isValid() ? QIcon(swatch) : QIcon());
}

QColor PropertyDock::presentColor() const
{
    return QColor(QString::fromStdString(PaintBodies::ColorOf(state.getSelected())));
}

void PropertyDock::chooseColor()
{
    const QColor present = presentColor();
    auto* dialog = new QColorDialog(present.isValid() ? present : QColor(150, 160, 170), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setOption(QColorDialog::DontUseNativeDialog);
    connect(dialog, &QColorDialog::colorSelected, this, &PropertyDock::paintSelected);
    dialog->open();
}

void PropertyDock::paintSelected(const QColor& color)
{
    state.getHistory().push(std::make_unique<PaintBodies>(state.getSelected(), color.name().toUpper().toStdString()));
}

} // namespace vrkview
