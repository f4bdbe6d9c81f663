#include "measure/DimensionDock.h"

#include "canvas/ViewState.h"
#include "edit/History.h"
#include "measure/MeasuredThings.h"

#include <QHeaderView>
#include <QScopedValueRollback>
#include <QTreeWidget>

namespace vrkview {
namespace {

using vrk::layout::Dimension;

constexpr int nameColumn = 0;
constexpr int valueColumn = 1;
constexpr float margin = 20; // model units about what is looked at: a point has no size

QString valueOf(const StationDimensions::Entry& entry)
{
    if (!entry.failure.empty())
        return QString::fromStdString(entry.failure);
    if (!entry.measured)
        return DimensionDock::tr("measuring…");
    const QString value = QString::fromStdString(labelOf(*entry.measured));
    return entry.isOutdated ? DimensionDock::tr("%1, measuring…").arg(value) : value;
}

} // namespace

DimensionDock::DimensionDock(ViewState& state, QWidget* parent)
    : QDockWidget(tr("Dimensions"), parent), state(state), list(new QTreeWidget)
{
    setObjectName("dimensions");
    list->setColumnCount(2);
    list->setHeaderLabels({tr("Dimension"), tr("Value")});
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setEditTriggers(QAbstractItemView::EditKeyPressed);
    list->header()->setSectionResizeMode(nameColumn, QHeaderView::Stretch);
    list->header()->setSectionResizeMode(valueColumn, QHeaderView::ResizeToContents);
    list->header()->setStretchLastSection(false);
    list->setContextMenuPolicy(Qt::ActionsContextMenu);
    setWidget(list);
    connect(list, &QTreeWidget::itemSelectionChanged, this, &DimensionDock::takeSelection);
    connect(list, &QTreeWidget::itemDoubleClicked, this,
            [this](QTreeWidgetItem* item) { focusOn(list->indexOfTopLevelItem(item)); });
    connect(list, &QTreeWidget::itemChanged, this, &DimensionDock::rename);
    following = StationDimensions::Get().changed.connect([this] { showEntries(); });
    showEntries();
}

void DimensionDock::showEntries()
{
    const QScopedValueRollback showing(isShowing, true);
    const std::vector<StationDimensions::Entry>& entries = StationDimensions::Get().getEntries();
    while (list->topLevelItemCount() > static_cast<int>(entries.size()))
        delete list->takeTopLevelItem(list->topLevelItemCount() - 1);
    while (list->topLevelItemCount() < static_cast<int>(entries.size())) {
        auto* item = new QTreeWidgetItem(list);
        item->setFlags(item->flags() | Qt::ItemIsEditable);
    }
    for (int row = 0; row < list->topLevelItemCount(); ++row) {
        const StationDimensions::Entry& entry = entries[static_cast<std::size_t>(row)];
        QTreeWidgetItem& item = *list->topLevelItem(row);
        const Dimension& dimension = *entry.dimension;
        item.setText(nameColumn,
                     QString::fromStdString(dimension.name.empty() ? nameOfDimension(dimension.ends) : dimension.name));
        item.setText(valueColumn, valueOf(entry));
        item.setToolTip(nameColumn, item.text(nameColumn));
        item.setToolTip(valueColumn, QString::fromStdString(entry.text()));
        item.setSelected(entry.isSelected);
    }
}

void DimensionDock::takeSelection()
{
    if (isShowing)
        return;
    const std::vector<StationDimensions::Entry>& entries = StationDimensions::Get().getEntries();
    std::vector<DimensionPointer> wanted;
    for (QTreeWidgetItem* item : list->selectedItems())
        wanted.push_back(entries[static_cast<std::size_t>(list->indexOfTopLevelItem(item))].dimension);
    if (!wanted.empty())
        state.clear(); // one key deletes either
    StationDimensions::Get().select(wanted);
}

void DimensionDock::focusOn(int row)
{
    const StationDimensions::Entry& entry = StationDimensions::Get().getEntries().at(static_cast<std::size_t>(row));
    if (!entry.measured)
        return;
    const vrk::rob::Posf text(entry.measured->textPlace);
    vrk::visual::Box box(text.x - margin, text.y - margin, text.z - margin, text.x + margin, text.y + margin,
                         text.z + margin);
    for (const auto& strip : entry.measured->lines)
        for (const vrk::rob::Posd& place : strip)
            box.addPoint(vrk::rob::Posf(place));
    emit focusRequested(box);
}

void DimensionDock::rename(QTreeWidgetItem* item)
{
    if (isShowing)
        return;
    const auto row = static_cast<std::size_t>(list->indexOfTopLevelItem(item));
    const DimensionPointer dimension = StationDimensions::Get().getEntries().at(row).dimension;
    state.getHistory().push(renameDimension(dimension, item->text(nameColumn).toStdString()));
}

} // namespace vrkview
